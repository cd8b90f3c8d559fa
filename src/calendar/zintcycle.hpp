// Seasonal cycles of intervals: which interval makes one cycle ("YEAR" for
// "MONTH", "WEEK" for "DAY"), how many intervals it holds, the season code of
// each interval of a series, and steps and counts that stay in phase with a
// cycle of Sunday-based week years.
//
// Season codes run from 0 to nseasons - 1; code 0 is the first interval of
// the cycle (January, Sunday, hour 0, the first working day of the week).
//
// All operations are pure: no I/O, no global state, no allocation.
#pragma once

#include "calendar/interval.hpp"

namespace qvt {

// The cycle of an interval. 0 with *sinterval and *nseasons set; 1 when the
// interval has no cycle ("OBS", a reserved code, or grids that don't nest,
// as MONTH5 in a year); 2 for a null argument or code 0. sinterval is
// cleared and nseasons set to 0 first, whenever they are given.
int zintsea(const INTERVAL* interval, double date, INTERVAL* sinterval, int* nseasons) noexcept;

// As zintsea, but *nseasons is also read: "OBS" has the cycle "OBS" with the
// same multiplier and 1 season; "WEEK" gives 53 when 53 came in (else 52)
// and "WEEKV" 52 when 52 came in (else 53).
int zintsea2(const INTERVAL* interval, double date, INTERVAL* sinterval, int* nseasons) noexcept;

// Season codes of n intervals from stdate into scodes. *nseasons on entry is
// the season count to use; a negative one asks for the interval's own,
// which is given back. scode is the code of the extra week of a long year on
// "WEEK" and "WEEKV" grids (a negative scode asks for a strict cycle from
// the first week of the year); -2 takes the cycle as *nseasons intervals.
// 0 filled; 1 no seasons, all codes 0; -1 failure (all codes 0).
int zintscd(const INTERVAL& intv, double stdate, int scode, long n, int* scodes,
            int* nseasons) noexcept;

// zintscd on a record that may already hold its cycle (sinterval and
// nseasons); without one, the cycle is derived as zintsea_set does. With
// scode -2 the count is stored in the record.
int zintscd2(INTERVALX* intv, double stdate, int scode, long n, int* scodes,
             int* nseasons) noexcept;

// Sets the cycle of an interval from what the caller gives: a count
// (*nseasons when nseasons isn't null and not 0, else the record's) and a
// cycle interval (*sinterval when it has a token, else the record's
// sinterval); with neither, it is derived as zintsea2 does. The cycle goes
// to *sinterval when given, to the record's sinterval when the record has
// one, and the count to the record (and *nseasons). 0; 1 when the grids
// don't nest; 2 for a null interval or a count that contradicts the cycle.
int zintsea_set(INTERVALX* interval, double date, INTERVALX* sinterval, int* nseasons) noexcept;

// Number of intervals in the cycle sinterval (null: the record's) that holds
// date. 0 with *nseasons set; 1 with *nseasons 0 when the grids don't nest or
// the count is below 1; 2 for a null argument.
int zintsea_calc_nseasons(const INTERVALX* interval, double date, const INTERVALX* sinterval,
                          int* nseasons) noexcept;

// Bits of act_flag for zintmult.
inline constexpr int kMultCycleDerive = 1;     // the new record's cycle derived from itself
inline constexpr int kMultCycleScale = 2;      // copied from interval's, its multiplier scaled
inline constexpr int kMultNoWeekYear = 4;      // keep WEEK52 as it is, not YEAR
inline constexpr int kMultNoRetail = 8;        // leave out the retail and WEEKV rewrites
inline constexpr int kMultFuzzyDay = 16;       // accept a day-based fit loosely

// The interval that is nseasons times interval, named as simply as possible
// (WEEK52 as YEAR, R445MON12 as R445YR ...). 0; 2 for a null argument, a
// count below 1 or a multiplier that overflows.
int zintmult(const INTERVALX* interval, int nseasons, INTERVALX* sinterval, int act_flag) noexcept;

// Rewrites a multiple of weeks or retail months as the larger unit: WEEKV52
// as YEARV, R445MON12 as R445YR, R445MON3 as R445QTR, R445QTR4 as R445YR.
// 0 (changed or not); 1 for a code it doesn't handle; 2 for a null record.
int zintrsimp(INTERVALX* interval) noexcept;

// A step that stays in phase with the cycle: the start of the interval n on
// from date0, where weeks are placed within Sunday-based week years (WEEK in
// YEAR), ISO years (WEEKV in YEARV), or aligned to the working days of
// align_int. Plain zintnx2 for everything else. Missing where it can't.
double zintnx_seas(const INTERVALX* intervalx, double date0, double n,
                   const INTERVALX* align_int) noexcept;

// The count that belongs to zintnx_seas.
double zintck_seas(const INTERVALX* intervalx, double date0, double daten,
                   const INTERVALX* align_int) noexcept;

// Start of the Sunday-based week year that holds date0 (it begins on the
// Sunday on or before January 4), its number in *year and the start of the
// next in *ds1. Missing (and nothing written) where it can't.
double zintyrse(double date0, int* year, double* ds1) noexcept;

// One row of seasonal dummy variables: sdummy gets nseasons + noint - 1
// values, 1 in the place of scode; the last season is the reference unless
// noint is set. On a WEEK grid the extra week of a long year (scode equal to
// nseasons) is split between the first and the last season by *partial, the
// part of the next year's first week that lies in it; a missing *partial is
// computed and stored.
void zintscy(const INTERVAL& intv, int scode, double date, int nseasons, int noint, double* sdummy,
             double* partial) noexcept;

}  // namespace qvt
