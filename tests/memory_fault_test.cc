// memory_fault_test.cc: every request for memory fails once. What cannot do
// without ends the process as out of memory ends it; what can gives the same
// result as with it.
#include "support/ar_image.h"
#include "support/child.h"
#include "support/faults/faults.h"
#include "support/heap_image.h"
#include "support/tree.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <tovan/tovan.h>
#include <unistd.h>
#include <functional>
#include <string>

namespace {

using support::always;
using support::no_fault;

constexpr int most_requests = 400;

// The process, or a child of it that was to become a command.
bool is_out_of_memory(const support::outcome &end) {
    return end.err == "test: Ran out of memory\n" &&
           (end.signal == SIGABRT || end.out.find("134") != std::string::npos);
}

// Fails the request number 1, 2 and so on, alone or with all that follow,
// until there is none of that number.
void check_requests(const std::function<void()> &body) {
    support::heal();
    const support::outcome healthy = support::with_fault(no_fault, body);
    ASSERT_EQ(healthy.exit_status, 0) << healthy.err;
    ASSERT_NE(healthy.out, "");
    int refused = 0;
    for (int times : {1, always}) {
        for (int nth = 1; nth <= most_requests; nth++) {
            bool met = false;
            support::outcome end =
                support::with_fault({"malloc", ENOMEM, nth, times}, [&] {
                    body();
                    if (support::calls_of("malloc") >= nth) printf("\nmet");
                });
            if (is_out_of_memory(end)) {
                refused++;
                continue;
            }
            size_t mark = end.out.rfind("\nmet");
            met = mark != std::string::npos;
            if (met) end.out.resize(mark);
            EXPECT_EQ(end.out, healthy.out) << "request " << nth;
            EXPECT_EQ(end.err, healthy.err) << "request " << nth;
            EXPECT_EQ(end.exit_status, 0) << "request " << nth;
            if (!met) break;
        }
    }
    EXPECT_GT(refused, 0);
}

TEST(memory_fault, strings_and_arrays) {
    check_requests([] {
        dy text{};
        dynew(&text, 0);
        for (int i = 0; i < 300; i++)
            dyfmt(&text, "@d ", i);
        dyinsert(&text, 0, "front ", 6);
        dyp words{};
        dypnew(&words, 1);
        dypsplit(&words, text.buffer, 1);
        printf("%d %s", words.count, static_cast<char *>(words.array[0]));
        free(words.array[0]);
        free(words.array);
        free(text.buffer);
        dy *pooled = dyalloc();
        dystr(pooled, "pooled");
        dyfree(pooled);
        puts(dycache("cached", -1));
        dl *head = nullptr;
        for (int i = 0; i < 40; i++)
            dlinsert(&head, dlalloc());
        while (head != nullptr) {
            dl *node = head;
            dldelete(node);
            dlfree(node);
        }
        dyd elements{};
        dydnew(&elements, 1, sizeof(int));
        for (int i = 0; i < 100; i++)
            dydadd(&elements, &i);
        printf("%d", static_cast<int *>(elements.data)[99]);
        free(elements.data);
    });
}

TEST(memory_fault, lines_and_words) {
    std::string text;
    for (int i = 0; i < 4000; i++)
        text += "word" + std::to_string(i) + (i % 10 != 0 ? " " : "\n");
    support::write_file("file", text);
    check_requests([] {
        int descriptor = open("file", O_RDONLY);
        rdy *reader = rdy_init(descriptor);
        dy line{};
        while (rdy_getline(reader, &line, 0) != nullptr)
            printf("%d ", line.length);
        free(line.buffer);
        free(reader);
        lseek(descriptor, 0, SEEK_SET);
        dyp words{};
        dypnew(&words, 1);
        rdflist(descriptor, &words, "file");
        printf("%d", words.count);
        free(words.array);
        close(descriptor);
        blk1 block{};
        read1blk("file", &block);
        printf("%s", block.name);
        free(block.name);
    });
}

TEST(memory_fault, small_things) {
    check_requests([] {
        svnode head{};
        printf("%s", svstr(&head, "key", "value"));
        printf("%s", svstr(&head, "key", "another"));
        svstr(&head, "key", nullptr);
        char *copy = savenfree(savestr("copy"));
        printf("%s%d", copy, strrindex(copy, "py"));
        free(copy);
        fo *output = fo_init(1, "NAME");
        fo_put(output, 1, "text", 0);
        fo_flush(output);
        free(output);
        int value = 0;
        evalarith("((((1+2)*3)+4)*5) ? 6 : 7", &value, nullptr);
        printf("%d", value);
        char path[] = "a/./b/../c";
        printf("%s", simplify(path, 0));
        char *absolute = p_resolve("x", "/y");
        printf("%s", absolute);
        free(absolute);
    });
}

TEST(memory_fault, patterns) {
    check_requests([] {
        printf("%d", fmatch("abcabcabc.cc", "*a*{b,c*a}*{.c,.cc}"));
        for (const char *pattern :
             {"<<a*>*>*[bd]", "<a|aa>*b", "\\([a-z]+\\)x\\1", "a.*b$", "lib"}) {
            rxpcomp(pattern, '\0', 0);
            for (int i = 0; i < 5; i++) {
                std::string subject(60, 'a');
                printf("%d", rxpeval(subject.c_str()));
                printf("%d", rxpeval("library xbxb"));
            }
        }
        rxpcomp("\\(a+\\)b", '\0', 0);
        rxpeval("xaab");
        char *text = rxprewrite("<\\1>");
        printf("%s", text);
        free(text);
    });
}

TEST(memory_fault, paths) {
    for (const char *file : {"d/1/x/a.c", "d/2/x/b.c", "d/a.c"})
        support::write_file(file, "");
    check_requests([] {
        int count = 0;
        for (char *path = globber("d/*/x/*.c"); path; path = globber(nullptr))
            count++;
        for (char *path = globber("*/a.c"); path; path = globber(nullptr))
            count++;
        char *found = findfile("a.c", "x:d", 0);
        printf("%d%s", count, found);
        free(found);
    });
}

TEST(memory_fault, dictionary_and_fixer) {
    support::write_file("dict", "A = one\nB = two\n");
    support::write_file("file", "@A@ and @B@\nlast\n");
    check_requests([] {
        setsfwrite([](const char *line, int length) {
            fwrite(line, 1, static_cast<size_t>(length), stdout);
        });
        printf("%d", sfdict("dict"));
        printf("%d", sfixfile("file", 0));
        sf_putdict(0);
    });
}

TEST(memory_fault, variables_and_expansion) {
    support::write_file("heap", support::heap_of({{"CC", "cc"},
                                                  {"SrcPath", ". src"},
                                                  {"T[a*]", "one"},
                                                  {"T[b]", "two"}}));
    support::write_file("src/f.c", "");
    check_requests([] {
        lvget(0, nullptr, 1, "heap", nullptr);
        dy text{};
        dynew(&text, 0);
        printf("%s", lvexpand("@CC @T[abc] @(findfile f.c) @(expr 1+2) "
                              "@(resolve x/../y) @(match a.c *.c)",
                              &text, "test", 1));
        free(text.buffer);
        printf("%s", lvfndsrc("f.c", nullptr));
    });
}

TEST(memory_fault, maps_and_names) {
    support::write_file("morva/data/roots.map", "/a /b\n/c /d\n");
    support::write_file("morva/data/sysnames.tab", "* n v b os 1 cpu x\n");
    support::write_file("traits", support::heap_of({{"T", "value"}}));
    setenv("TRAITS_FILE", "traits", 1);
    setenv("MORVA", "morva", 1);
    check_requests([] {
        dy path{};
        dynew(&path, 0);
        map_root("/a/x", &path);
        printf("%s", path.buffer);
        free(path.buffer);
        printf("%s", sysnames(0, nullptr)[0]);
        printf("%s", trait_str("T", "default", 0));
        printf("%s", uniqid() != nullptr ? "id" : "");
    });
}

TEST(memory_fault, commands) {
    check_requests([] {
        printf("%d ", execstr(0, 1, 2, 1, 0, "echo a b"));
        printf("%d ", execstr(0, 1, 2, 1, 0, "echo c | cat"));
    });
}

TEST(memory_fault, archives) {
    support::write_file(
        "x.a", support::ar_archive(
                   {{"a.o", "first"}, {"a-name-of-20-letters", "second"}}));
    check_requests([] {
        int descriptor;
        const armember *list = getarlist("x.a", &descriptor);
        char *data = getarmemb(descriptor, list);
        printf("%s %.5s %s", list->name, data, list->next->name);
        free(data);
        close(descriptor);
    });
}

}  // namespace
