// getdylin.cc: lines of a stream.
//
// A line is fetched in pieces with fgets(), straight into the string's
// buffer: it stops at a newline by itself, copies spans, takes nothing from
// the stream beyond the newline, and stops at a size, so that an endless line
// ends as out of memory does. What fgets() does not tell is how much it
// stored, and the bytes may hold NULs. So the place is filled with newlines
// first, and the first newline found there afterwards tells:
//
//     a \0 b \n \0 \n \n     followed by NUL: the line's own; 4 bytes stored
//     a \0 b \0 \n \n \n     behind a NUL: fill; the input ended after 3
//     a \0 b c  d  e  \0     none: the piece is full; 6 bytes stored
//
// The first piece is small, and each is twice as large as the one before: so
// filling costs no more than reading, whatever room a long line has left.
#include "getdylin.h"

#include "ident.h"
#include "private_room.h"

#include <string.h>

namespace {

constexpr int control_z = 26;
constexpr int new_line_size = 56;
constexpr int new_appended_size = 120;
constexpr int least_piece = 64;     // a line of usual length, or most of it
constexpr int most_at_first = 512;  // what is filled for each short line
constexpr int largest_piece = 1 << 20;

struct piece {
    int stored;    // bytes, a newline included
    bool is_last;  // a newline or the end of the input came
};

// A line on its way into a string.
struct fetched {
    char *block;  // the string's, or what it moved to
    int start;    // the string's length before
    int length;   // with the line behind it
};

// Reads up to `size` - 1 bytes to `place`, which has room for `size`.
piece read_piece(FILE *stream, char *place, int size) {
    auto room = static_cast<size_t>(size);
    // A string without a block always asks for room.
    // NOLINTNEXTLINE(clang-analyzer-core.NonNullParamChecker)
    memset(place, '\n', room);
    // After a read error the bytes before it lie there, unterminated.
    bool is_terminated = fgets(place, size, stream) != nullptr;
    const void *found = memchr(place, '\n', room);
    if (found == nullptr) return {size - 1, false};
    auto at = static_cast<int>(static_cast<const char *>(found) - place);
    if (!is_terminated) return {at, true};
    bool is_own = at + 1 < size && place[at + 1] == '\0';
    return {is_own ? at + 1 : at - 1, true};
}

// Skips blanks and tabs; false at the end of the input.
bool skip_blanks(FILE *stream) {
    int character;
    do {
        character = getc_unlocked(stream);
    } while (character == ' ' || character == '\t');
    return character != EOF && ungetc(character, stream) != EOF;
}

char *with_room(char *block, int size) {
    return static_cast<char *>(
        tovan::make_room(block, static_cast<size_t>(size)));
}

// The first piece is what the capacity has room for, if that is not too
// little: the length of lines before this one, and no question to the
// allocator.
int first_piece(const dy *line) {
    int room = line->capacity - line->length;
    return room < least_piece     ? least_piece
           : room > most_at_first ? most_at_first
                                  : room;
}

// Fetches a line, its newline included, behind what the string holds.
fetched fetch_line(FILE *stream, const dy *line) {
    fetched text = {line->capacity != 0 ? line->buffer : nullptr, line->length,
                    line->length};
    for (int size = first_piece(line);; size *= 2) {
        if (size > largest_piece) size = largest_piece;
        int64_t length = text.length;
        int end = tovan::limited_capacity(length + size, length + 2);
        if (end > line->capacity) text.block = with_room(text.block, end);
        piece got =
            read_piece(stream, text.block + text.length, end - text.length);
        text.length += got.stored;
        if (got.is_last) return text;
    }
}

// Drops the last character of the line when it is this one.
bool drop_last(fetched *text, char character) {
    if (text->length == text->start) return false;
    if (text->block[text->length - 1] != character) return false;
    text->length--;
    return true;
}

// Makes the block the string's buffer, with the capacity of a string to which
// the characters were added one by one.
void keep_block(dy *line, fetched *text) {
    if (text->length >= line->capacity) {
        int64_t steps = (text->length - line->capacity) / tovan::string_step;
        line->capacity = tovan::limited_capacity(
            line->capacity + (steps + 1) * tovan::string_step,
            int64_t{text->length} + 1);
        text->block = with_room(text->block, line->capacity);
    }
    line->buffer = text->block;
}

}  // namespace

char *readdyline(FILE *stream, dy *line, int skip) {
    if (skip && !skip_blanks(stream)) return nullptr;
    fetched text = fetch_line(stream, line);
    bool has_newline = drop_last(&text, '\n');
    keep_block(line, &text);
    if (!has_newline) drop_last(&text, control_z);
    // Chosen: a carriage return alone is an empty line, not the end.
    bool is_end = !has_newline && text.length == text.start;
    drop_last(&text, '\r');
    line->length = text.length;
    line->buffer[line->length] = '\0';
    return is_end ? nullptr : line->buffer;
}

char *getdyline(FILE *stream, dy *line, int skip) {
    if (feof(stream)) return nullptr;
    dyreuse(line, line->capacity == 0 ? new_line_size : 0);
    return readdyline(stream, line, skip);
}

char *getdycline(FILE *stream, dy *line, int skip) {
    if (feof(stream)) return nullptr;
    if (line->capacity == 0) dyreuse(line, new_appended_size);
    return readdyline(stream, line, skip);
}

TOVAN_IDENT(getdylin, "8.4", "26/11/21")
