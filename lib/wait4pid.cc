// wait4pid.cc: waiting for one child among several.
#include "wait4pid.h"

#include "chkalloc.h"
#include "ident.h"

#include <errno.h>
#include <stddef.h>
#include <stdlib.h>
#include <sys/wait.h>

namespace {

// ERESTART: not every system's errno.h names it.
constexpr int errno_restart = 85;

// A child that was reaped while another one was waited for.
struct mourned {
    mourned *older;
    mourned *newer;
    mourned *chain;  // next, older one of the same bucket
    pid_t pid;
    int status;
};

// The children in mourning: a ring through `ends`, the newest first, and
// buckets by process id, so that a child is found without a walk over all the
// others. Chains run from new to old too: of two records with one process id
// (the system used it again) the newer is found. Filled by wait4pid(); the
// buckets stay at their largest number.
struct mourning_list {
    mourned ends;
    mourned **buckets;
    size_t bucket_count;  // 0, or a power of two
    size_t count;
};
constinit mourning_list mourning{
    {&mourning.ends, &mourning.ends, nullptr, 0, 0}, nullptr, 0, 0};

constexpr size_t first_bucket_count = 64;

// Set by simulate_waitpid(), for good.
constinit bool use_simulation = false;

mourned **bucket_of(pid_t pid) {
    size_t number = static_cast<size_t>(pid);
    return &mourning.buckets[number & (mourning.bucket_count - 1)];
}

void chain_up(mourned *child) {
    mourned **bucket = bucket_of(child->pid);
    child->chain = *bucket;
    *bucket = child;
}

void double_buckets() {
    free(mourning.buckets);
    mourning.bucket_count = mourning.bucket_count == 0
                                ? first_bucket_count
                                : mourning.bucket_count * 2;
    size_t size = mourning.bucket_count * sizeof(mourned *);
    mourning.buckets = static_cast<mourned **>(chkalloc(size));
    for (size_t i = 0; i < mourning.bucket_count; i++) {
        mourning.buckets[i] = nullptr;
    }
    for (mourned *child = mourning.ends.newer; child != &mourning.ends;
         child = child->newer) {
        chain_up(child);
    }
}

void mourn(pid_t pid, int status) {
    if (mourning.count == mourning.bucket_count) double_buckets();
    auto *child = static_cast<mourned *>(chkalloc(sizeof(mourned)));
    child->pid = pid;
    child->status = status;
    child->newer = &mourning.ends;
    child->older = mourning.ends.older;
    child->older->newer = child;
    mourning.ends.older = child;
    chain_up(child);
    mourning.count++;
}

// The link to the newest record of this child, or to the end of the chain.
mourned **link_to(pid_t pid) {
    mourned **link = bucket_of(pid);
    while (*link != nullptr && (*link)->pid != pid)
        link = &(*link)->chain;
    return link;
}

void store(int *status, int value) {
    if (status != nullptr) *status = value;
}

// Takes the newest record of this child off the list.
//   result    false when there is none
bool bury(pid_t pid, int *status) {
    mourned **link = link_to(pid);
    mourned *child = *link;
    if (child == nullptr) return false;
    *link = child->chain;
    child->older->newer = child->newer;
    child->newer->older = child->older;
    mourning.count--;
    store(status, child->status);
    free(child);
    return true;
}

pid_t wait_once(pid_t pid, int *status) {
    return use_simulation ? wait4pid(pid, status) : waitpid(pid, status, 0);
}

}  // namespace

pid_t waitforpid(pid_t pid, int *status) {
    pid_t reaped;
    do {
        reaped = wait_once(pid, status);
    } while (reaped == -1 && (errno == EINTR || errno == errno_restart));
    return reaped;
}

pid_t wait4pid(pid_t pid, int *status) {
    if (mourning.count > 0) {
        pid_t wanted = pid == -1 ? mourning.ends.older->pid : pid;
        if (bury(wanted, status)) return wanted;
    }
    if (pid == -1) return wait(status);
    for (;;) {
        int fate;
        pid_t reaped = wait(&fate);
        if (reaped == -1) return -1;
        if (reaped == pid) {
            store(status, fate);
            return pid;
        }
        mourn(reaped, fate);
    }
}

void simulate_waitpid(void) {
    use_simulation = true;
}

TOVAN_IDENT(wait4pid, "8.4", "26/11/21")
