// emitlacol.cc: local calendar time to seconds, the reverse of localtime().
//
// Days are counted from 1970 in cycles of four years, and within the cycle
// with a table of the three years on either side: 1973 is no whole cycle away,
// so it starts 1096 days after 1970; 1966 is one cycle before, 1461 days. The
// zone is what localtime() says of time 0; daylight saving is taken back at
// the end, where localtime() says that it is in force at the result. Not
// handled: centuries without a leap day, zones whose offset has changed since
// 1970, and the hour that daylight saving skips. The hour that comes twice
// means the second one, in standard time.
#include "convert.h"

#include "ident.h"

namespace {

constexpr long epoch_year = 70;
constexpr long cycle_days = 4 * 365 + 1;
constexpr long hour_seconds = 3600;

// Days from 1970 to the start of 1967, 1968 and so on to 1973.
constexpr short days_to_year[7] = {-1096, -731, -365, 0, 365, 730, 1096};

// Minutes to add to local standard time for universal time. Asked of
// localtime() at the first conversion; holds for the process.
struct zone_state {
    bool is_known;
    long offset;
};
constinit zone_state zone{};

long zone_offset() {
    const time_t epoch = 0;
    struct tm at = *localtime(&epoch);
    if (at.tm_isdst > 0 && --at.tm_hour < 0) {
        at.tm_hour = 23;
        at.tm_year = epoch_year - 1;
    }
    long minutes = at.tm_min + 60 * at.tm_hour;
    return at.tm_year == epoch_year ? -minutes : 24 * 60 - minutes;
}

long day_of_year(const struct tm &local) {
    return local.tm_mday - 1L + monlimits[local.tm_year % 4 == 0][local.tm_mon];
}

long days_since_epoch(const struct tm &local) {
    long years = local.tm_year - epoch_year;
    return day_of_year(local) + cycle_days * (years / 4) +
           days_to_year[3 + years % 4];
}

}  // namespace

time_t emitlacol(const struct tm *local) {
    struct tm fields = *local;  // it may be localtime()'s own record
    if (!zone.is_known) zone = {true, zone_offset()};
    long days = days_since_epoch(fields);
    time_t seconds = fields.tm_sec + 60 * (fields.tm_min + zone.offset) +
                     hour_seconds * (fields.tm_hour + 24 * days);
    struct tm *shared = localtime(&seconds);
    if (shared == nullptr) return seconds;
    if (shared->tm_isdst > 0) seconds -= hour_seconds;
    fields.tm_yday = static_cast<int>(day_of_year(fields));
    fields.tm_wday = static_cast<int>((days % 7 + 11) % 7);
    *shared = fields;
    return seconds;
}

TOVAN_IDENT(emitlacol, "8.4", "26/11/21")
