// monthnms.cc: names and lengths of the calendar.
#include "convert.h"

#include "ident.h"

constinit const char *const monthnms[12] = {
    "January", "February", "March",     "April",   "May",      "June",
    "July",    "August",   "September", "October", "November", "December",
};

constinit const char *const daynms[7] = {
    "Sunday",   "Monday", "Tuesday",  "Wednesday",
    "Thursday", "Friday", "Saturday",
};

constexpr short monlimits[2][13] = {
    {0, 31, 59, 90, 120, 151, 181, 212, 243, 273, 304, 334, 365},
    {0, 31, 60, 91, 121, 152, 182, 213, 244, 274, 305, 335, 366},
};

namespace {

consteval bool is_month_length(int month, int days) {
    constexpr int lengths[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return days == lengths[month];
}

consteval bool limits_are_right() {
    for (int month = 0; month < 12; month++) {
        int leap_day = month == 1;
        int ordinary = monlimits[0][month + 1] - monlimits[0][month];
        int leap = monlimits[1][month + 1] - monlimits[1][month];
        if (!is_month_length(month, ordinary)) return false;
        if (!is_month_length(month, leap - leap_day)) return false;
    }
    return true;
}
static_assert(limits_are_right());

}  // namespace

TOVAN_IDENT(monthnms, "8.4", "26/11/21")
