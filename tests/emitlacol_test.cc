// emitlacol_test.cc: local calendar time to seconds. The zone is kept for the
// process, so that every case runs in a child with a TZ of its own.
#include "support/child.h"

#include <gtest/gtest.h>
#include <limits.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>
#include <tovan/convert.h>
#include <random>

namespace {

void expect_silence(const std::string &zone,
                    const std::function<void()> &body) {
    support::outcome end = support::in_child([&] {
        setenv("TZ", zone.c_str(), 1);
        tzset();
        body();
    });
    EXPECT_EQ(end.out, "") << zone;
    EXPECT_EQ(end.exit_status, 0) << zone << end.err;
}

bool have_equal_clocks(const struct tm &a, const struct tm &b) {
    return a.tm_sec == b.tm_sec && a.tm_min == b.tm_min &&
           a.tm_hour == b.tm_hour && a.tm_mday == b.tm_mday &&
           a.tm_mon == b.tm_mon && a.tm_year == b.tm_year;
}

struct tm local_of(time_t when) {
    struct tm local;
    localtime_r(&when, &local);
    return local;
}

void compare(time_t when) {
    struct tm local = local_of(when);
    // Of an hour that comes twice, the later one is meant.
    time_t later = when + 3600;
    time_t expected = have_equal_clocks(local, local_of(later)) ? later : when;
    time_t got = emitlacol(&local);
    if (got != expected)
        printf("%ld: %ld instead of %ld\n", when, got, expected);
    struct tm for_mktime = local;
    time_t second_opinion = mktime(&for_mktime);
    if (second_opinion != when)
        printf("%ld: mktime says %ld\n", when, second_opinion);
}

// Zones east and west, with minutes, with daylight saving in the northern and
// the southern summer (in force at time 0), beyond 12 hours.
const char *const zones[] = {
    "UTC0",
    "EST5EDT,M3.2.0,M11.1.0",
    "CET-1CEST,M3.5.0,M10.5.0/3",
    "IST-5:30",
    "NPT-5:45",
    "NST3:30NDT,M3.2.0,M11.1.0",
    "NZST-12NZDT,M9.5.0,M4.1.0/3",
    "<-12>12",
    "<+14>-14",
    "BRT3BRST,M10.3.0/0,M2.3.0/0",
};

// The years in which every fourth one is a leap year: 1901 to 2099.
TEST(emitlacol, agrees_with_localtime_and_mktime_in_many_zones) {
    for (const char *zone : zones) {
        expect_silence(zone, [] {
            std::mt19937_64 random(1);
            for (int i = 0; i < 2000; i++) {
                constexpr time_t first = -2177000000, last = 4100000000;
                compare(first + static_cast<time_t>(random() % (last - first)));
            }
        });
    }
}

TEST(emitlacol, agrees_around_the_changes_of_daylight_saving) {
    for (const char *zone : {zones[1], zones[2], zones[6]}) {
        expect_silence(zone, [] {
            constexpr time_t start_of_2001 = 978307200;
            for (time_t step = 0; step < 366 * 48; step++)
                compare(start_of_2001 + step * 1800 + 1);
        });
    }
}

TEST(emitlacol, every_day_from_1901_to_2099) {
    expect_silence("UTC0", [] {
        constexpr time_t day = 86400;
        for (time_t days = -25202; days < 47481; days++)
            compare(days * day + 43200);
    });
}

time_t of(int year, int month, int day, int hour = 0, int minute = 0,
          int second = 0) {
    struct tm local {};
    local.tm_year = year - 1900;
    local.tm_mon = month - 1;
    local.tm_mday = day;
    local.tm_hour = hour;
    local.tm_min = minute;
    local.tm_sec = second;
    return emitlacol(&local);
}

void expect(time_t got, time_t expected, const char *what) {
    if (got != expected) printf("%s: %ld, not %ld\n", what, got, expected);
}

TEST(emitlacol, known_times) {
    expect_silence("UTC0", [] {
        expect(of(1970, 1, 1), 0, "epoch");
        expect(of(1969, 12, 31, 23, 59, 59), -1, "before the epoch");
        expect(of(2000, 2, 29, 12), 951825600, "leap day");
        expect(of(2026, 11, 21, 8, 13, 5), 1795248785, "today");
        expect(of(1966, 1, 1), -1461 * 86400L, "a cycle before");
        expect(of(1967, 1, 1), -1096 * 86400L, "three years before");
    });
}

TEST(emitlacol, every_fourth_year_is_a_leap_year) {
    expect_silence("UTC0", [] {
        expect(of(2100, 2, 28), 4107456000, "the day before");
        expect(of(2100, 2, 29), 4107542400, "a day that is none");
        expect(of(2100, 3, 1), 4107628800, "one day late from then on");
    });
}

TEST(emitlacol, fields_outside_their_ranges_carry) {
    expect_silence("UTC0", [] {
        expect(of(1970, 1, 32), 31 * 86400L, "day 32");
        expect(of(1970, 1, 0), -86400, "day 0");
        expect(of(1970, 1, 1, 48), 2 * 86400L, "hour 48");
        expect(of(1970, 1, 1, 0, -1), -60, "minute -1");
        expect(of(1970, 1, 1, 0, 0, 61), 61, "second 61");
    });
}

TEST(emitlacol, daylight_saving_at_time_0_may_lead_into_1969) {
    // One hour ahead of standard time, which is one hour behind.
    expect_silence("STD1DST0,M10.1.0,M3.1.0", [] {
        expect(of(1970, 7, 1), 181 * 86400L + 3600, "standard time");
        expect(of(1970, 1, 1), 0, "daylight saving");
    });
}

TEST(emitlacol, the_zone_is_asked_once) {
    expect_silence("IST-5:30", [] {
        expect(of(1970, 1, 1), -19800, "first");
        setenv("TZ", "EST5", 1);
        tzset();
        expect(of(1970, 1, 1), -19800, "kept");
    });
}

TEST(emitlacol, seconds_of_the_zone_at_time_0_do_not_count) {
    expect_silence("LMT0:44:30", [] {
        expect(of(1970, 1, 1), 2700, "rounded to the minute before");
    });
}

TEST(emitlacol, the_shared_record_holds_the_fields_afterwards) {
    expect_silence("EST5EDT,M3.2.0,M11.1.0", [] {
        time_t any = 1;
        struct tm *shared = localtime(&any);
        struct tm local {};
        local.tm_year = 126;
        local.tm_mon = 10;
        local.tm_mday = 21;
        local.tm_hour = 8;
        local.tm_min = 13;
        local.tm_sec = 5;
        local.tm_wday = -1;
        local.tm_yday = -1;
        local.tm_isdst = 7;
        emitlacol(&local);
        if (local.tm_wday != -1 || local.tm_yday != -1) puts("written");
        if (!have_equal_clocks(*shared, local)) puts("other fields");
        if (shared->tm_isdst != 7) puts("not as passed");
        expect(shared->tm_wday, 6, "a Saturday");
        expect(shared->tm_yday, 324, "day of the year");
    });
}

TEST(emitlacol, the_shared_record_may_be_passed_itself) {
    expect_silence("EST5EDT,M3.2.0,M11.1.0", [] {
        time_t when = 1000000000;
        struct tm *shared = localtime(&when);
        struct tm before = *shared;
        expect(emitlacol(shared), when, "time");
        if (memcmp(shared, &before, sizeof before) != 0) puts("changed");
    });
}

TEST(emitlacol, days_of_the_week_before_1970) {
    expect_silence("UTC0", [] {
        time_t any = 1;
        struct tm *shared = localtime(&any);
        for (time_t days = -1000; days < 1000; days++) {
            struct tm local = local_of(days * 86400);
            struct tm blank = local;
            blank.tm_wday = blank.tm_yday = 0;
            emitlacol(&blank);
            if (shared->tm_wday != local.tm_wday ||
                shared->tm_yday != local.tm_yday)
                printf("day %ld\n", days);
        }
    });
}

TEST(emitlacol, years_beyond_localtime_are_still_converted) {
    expect_silence("UTC0", [] {
        struct tm local {};
        local.tm_mday = INT_MAX;
        local.tm_year = INT_MAX;
        long years = INT_MAX - 70L;
        // INT_MAX - 70 is 1 more than a multiple of four.
        long days = INT_MAX - 1L + 1461 * (years / 4) + 365;
        expect(emitlacol(&local), days * 86400, "far");
        local.tm_year = INT_MIN;
        local.tm_mday = 1;
        years = INT_MIN - 70L;
        expect(emitlacol(&local), (1461 * (years / 4) - 731) * 86400,
               "long ago");
    });
}

}  // namespace
