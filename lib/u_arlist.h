// u_arlist.h: the members of ar archives.
// Builds on: errexit.h, chkalloc.h, dystr.h, dypadd.h, convert.h, strutil.h.
//
// An archive is listed once, from its headers alone, as a linked list of
// records; the data of a member is read when it is asked for. Long names come
// from the archive's "//" table (docs/formats/ar.md).
// Always: positions of members rise along the list, and member data lies
// inside the file, below 2^31-1. Names are not looked at: they may be empty,
// repeat themselves, or hold "/" and "..".
// Order: getarlist, then the others.
// Errors: an archive that cannot be read ends the process, with "%s: " and
// the system's text where a system call failed, and else with the message
// that is given below.
#ifndef TOVAN_U_ARLIST_H
#define TOVAN_U_ARLIST_H

#include "attrs.h"

#include <stdint.h>

TOVAN_BEGIN_C

typedef struct armember {
    struct armember *next;
    struct armember *link;  // always null
    const char *name;
    int32_t mtime;   // seconds since the epoch
    int32_t offset;  // of the data in the file
    int32_t size;    // of the data, without the byte that pads it
    uint16_t word;   // always 0
    uint16_t hash;   // strhash(name, null, fhash_tab)
} armember;

// Lists an archive. Symbol tables, the long-name table and members with the
// name "__________EBEB_" are left out.
//   path      of the archive
//   descriptor  null, or where the descriptor of the archive goes, which
//             stays open then; it is close-on-exec, its position anywhere
//   result    the first member, or null: there is none
//   owner     the list and its names: process, never released; the
//             descriptor: caller (close)
//   fails     ends the process with
//             "%s: could not read ar(1) magic": fewer than 8 bytes
//             "%s: does not contain ar(1) magic": anything but "!<arch>\n"
//             "malformed archive -- could not read entry header at %ld": a
//             header without its end mark, a size that is no plain number, or
//             data that ends behind the file or behind 2^31-1; the number is
//             the offset just behind the header
//             "%s: could not read entire long table": the file ends in it
//             "Seek failed": a pipe
//   edge      a header of fewer than 60 bytes at the end is the end. Times
//             are read as atoin() reads them. A name that is "/" and a number
//             is read in the table, up to the next "/", or is empty where the
//             table has no such place; with several tables the last one
//             counts, without any the name stays
armember *getarlist(const char *path, int *descriptor);

// Reads the data of a member.
//   descriptor  from getarlist(), or another one of the same file
//   result    a block of member->size bytes, without a terminator
//   owner     caller (free)
//   fails     ends the process with "%s: could not read all data" and the
//             member's name: the file ends before the data does
char *getarmemb(int descriptor, const armember *member);

// Renames members by a map: a count n, n pairs of words, and behind them the
// names; the second word of a pair is where its name starts in there.
//   map       in the byte order of this host; trusted
//   list      its first n members, in their order, get the names and their
//             hashes; it may be shorter, or null
//   owner     the names: process. The map may go
//   edge      a count of 0 or less renames nothing; an equal name stays the
//             string that it is
void arlmap(const int32_t *map, armember *list);

// Whether members of a name are left out of lists.
//   name      as it stands in a header, without blanks and one "/" at its end
//   result    null, or the name as a constant: "", "/" or "__________EBEB_"
const char *ignore_file(const char *name);

TOVAN_END_C

#endif
