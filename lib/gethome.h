// gethome.h: users, groups and the host.
// Builds on: errexit.h, chkalloc.h, convert.h.
//
// Always: the system is asked with getpwnam, getpwuid, getgrgid, getlogin and
// gethostname; a program that links its own decides what is answered.
// Results that point into the environment or into the system's static entry
// hold until that changes; the rest says how long it holds.
// Errors: fatal where a function says so; else null or the fallback.
#ifndef TOVAN_GETHOME_H
#define TOVAN_GETHOME_H

#include "attrs.h"

#include <grp.h>
#include <pwd.h>

TOVAN_BEGIN_C

// The name of the environment variable that names the user, "LOGNAME" until
// a tool writes another into it: 64 bytes, so at most 63 characters. Empty:
// no variable, and a null user is nobody.
extern char envuser[];

// Tells how a user is named.
//   result    0 null with an empty envuser; 1 null: the user of the
//             environment; 2 "-": who logged in; 3 "": the real user id;
//             4 anything else: a user's name
int usetype(const char *user);

// The password entry of a user named in one of these ways. Without the
// environment variable a null user is as "-"; without a login name "-" is as
// "".
//   result    null: nobody, or no entry
//   owner     the system, until the next question for a user
struct passwd *getpwuser(const char *user);

// The name of a user; behind the first "+" when there is one in it.
//   fallback  what a user without a name is given; may be null
//   result    null user: the environment variable's text, else the login
//             name, else the real user's; "-": the last two; "": the real
//             user's; a name: itself; else fallback
//   owner     the environment, the system, or the caller's own text
//   edge      null when nothing is found and fallback is null
const char *getnmuser(const char *user, const char *fallback);

// The home directory of a user's password entry.
//   result    null when there is no entry
//   owner     the system, until the next question for a user
//   fails     no entry, and must is not 0: ends the process with "%s: no such
//             user" (the user, or NULL)
const char *gethome(const char *user, int must);

// The user's own installation directory. For a null or empty user that is
// HOME_MORVA as it stands, or HOME and "/.morva"; else, or without HOME, the
// home directory of the user's entry and "/.morva".
//   owner     library until it is asked for another user
//   fails     as gethome; "%s: home directory name too long" (the directory)
//             when the result has more than 99 characters
//   edge      asked for the same user again it answers as before, whatever
//             the environment says now; null and "" are different users
const char *home_morva(const char *user);

// The host's name, asked for once.
//   owner     process
//   fails     ends the process with "gethostname() failed"
//   edge      at most 63 characters
const char *get_host(void);

// The name of a user number, behind the first "+" when there is one in it;
// the number in decimal when it has no entry.
//   owner     library until a number that differs by a multiple of 64 is
//             looked up
//   edge      a negative number is looked up every time, the others once
//             while they are kept
const char *getuname(int uid);

// The same for a group number; a "+" stays.
const char *getgname(int gid);

// 1 when the two numbers are equal, else 0.
int ingroup(int a, int b);

// The effective user id. Deliberate, though the name speaks of a group (test
// gidget_gives_the_effective_user_id).
int gidget(void);

// Does nothing; a hook that callers keep.
void dumb_dos_user(void);

TOVAN_END_C

#endif
