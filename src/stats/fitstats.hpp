// Statistics of fit: how well a vector of predictions matches a vector of
// actual values, in three layers.
//  - ztssfe turns the two vectors into elementary errors of one kind;
//  - ztssfa aggregates such a vector to one number (min, max, sum, mean,
//    median, geometric mean);
//  - ztssfme fills the whole record SF_STATS, ztssfm computes the one
//    statistic a selection criterion names, and ztssfmc says which of two
//    values of it is better.
// ztssumm describes one series on its own.
//
// Common conventions:
//  - Every input may hold missing values (any of the 28 kinds); an element
//    with a missing actual or prediction yields a missing error, and every
//    aggregate skips missing elements, so an undefined statistic is the
//    missing value, never a NaN.
//  - Results: 0 done; 3 (ztssfe) some element could not be divided; 4
//    (ztssfm) the criterion could not be formed; -1 no memory; -2 undefined
//    statistic; -3 no usable observations; -4 overflow of a running sum; -5
//    a negative value entered a geometric mean; -99 bad arguments.
//  - holdout is the base of the random-walk comparison: missing means that
//    each actual is predicted by the last non-missing actual before it; a
//    value means that this one value predicts every actual of the vector.
#pragma once

#include "stats/numeric.hpp"
#include "stats/sfstats.hpp"

#include <bit>
#include <cstdint>
#include <limits>
#include <string_view>

namespace qvt {

// ---------------------------------------------------------------- limits

// Errors below this magnitude count as zero in the kinds that divide.
inline constexpr double kSfZero = 1.110223024625157e-16;
// Bound of running sums: one more addition of a value of the same sign may
// not be allowed past it.
inline constexpr double kSfSumMax = 1.7976931348623155e+304;
// The largest double; also the value of a squared error too large to square.
inline constexpr double kSfHuge = std::numeric_limits<double>::max();
// Smallest mean square that may enter a logarithm (and smallest standard
// deviation that may divide).
inline constexpr double kSfLogMin = 2.225073858507202e-308;
// Floor of one absolute difference in the scale of the mean absolute scaled
// error, so that a constant stretch cannot make the scale zero.
inline constexpr double kSfScaleMin = 1.053671212772351e-08;

// The limits are compared by their bit patterns: a literal that rounds to a
// neighbouring double would move a boundary.
static_assert(std::bit_cast<std::uint64_t>(kSfZero) == 0x3CA0000000000002ULL);
static_assert(std::bit_cast<std::uint64_t>(kNumBig) == 0x5FF0000000000087ULL);
static_assert(std::bit_cast<std::uint64_t>(kSfSumMax) == 0x7F1A36E2EB1C432BULL);
static_assert(std::bit_cast<std::uint64_t>(kSfHuge) == 0x7FEFFFFFFFFFFFFFULL);
static_assert(std::bit_cast<std::uint64_t>(kSfLogMin) == 0x0010000000000001ULL);
static_assert(std::bit_cast<std::uint64_t>(kSfScaleMin) == 0x3E46A09E667F3BCEULL);
static_assert(std::bit_cast<std::uint64_t>(kExpHigh) == 0x40862E42FEFA39EFULL);

// ------------------------------------------------------ kinds, aggregates

// Error kinds of ztssfe, with e = actual - predict. The kinds that divide use
// a guarded ratio: an element that can't be divided is missing, or the
// special missing value .I (.M) for a positive (negative) ratio beyond range.
inline constexpr int kSfErr = 1;      // e
inline constexpr int kSfAbsErr = 2;   // |e|
inline constexpr int kSfSqErr = 3;    // e^2, the largest double when |e| >= kNumBig or e^2 overflows
inline constexpr int kSfPe = 5;       // e / actual
inline constexpr int kSfApe = 6;      // |e / actual|
inline constexpr int kSfPpe = 7;      // e / predict
inline constexpr int kSfAppe = 8;     // |e / predict|
inline constexpr int kSfSpe = 9;      // e / ((actual + predict) / 2)
inline constexpr int kSfAspe = 10;    // |e / ((actual + predict) / 2)|
inline constexpr int kSfRe = 11;      // e / (actual - random walk)
inline constexpr int kSfRae = 12;     // |e / (actual - random walk)|
inline constexpr int kSfApes = 15;    // |e| / standard deviation of the actuals
inline constexpr int kSfAse = 16;     // |e| / mean absolute first difference

// Aggregates of ztssfa.
inline constexpr int kSfMin = 1;
inline constexpr int kSfMax = 2;
inline constexpr int kSfSum = 3;
inline constexpr int kSfMean = 4;
inline constexpr int kSfMedian = 5;
inline constexpr int kSfGeoMean = 6;

// Which of two values of a criterion is better.
inline constexpr int kSfSmaller = 0;
inline constexpr int kSfLarger = 1;
inline constexpr int kSfSmallerAbs = 2;

// ------------------------------------------------------- criterion table

// One selection criterion. The R-square family has kind 0 and aggregate 0:
// ztssfrs computes it from the vectors. The information criteria (20 to 23)
// and UMSE, URMSE go from the sum of squared errors and its count.
struct SfCriterion {
  int code;
  std::string_view name;  // as tables and data sets show it
  int kind;               // error kind of ztssfe
  int aggregate;          // operation of ztssfa
  bool x100;              // the result is a percentage
  int better;             // kSfSmaller, kSfLarger or kSfSmallerAbs
};

inline constexpr SfCriterion kSfCriteria[] = {
    {1, "SSE", kSfSqErr, kSfSum, false, kSfSmaller},
    {2, "MSE", kSfSqErr, kSfMean, false, kSfSmaller},
    {3, "RMSE", kSfSqErr, kSfMean, false, kSfSmaller},
    {4, "UMSE", kSfSqErr, kSfSum, false, kSfSmaller},
    {5, "URMSE", kSfSqErr, kSfSum, false, kSfSmaller},
    {10, "RSQUARE", 0, 0, false, kSfLarger},
    {11, "ADJ_RSQ", 0, 0, false, kSfLarger},
    {12, "A_ADJ_RSQ", 0, 0, false, kSfLarger},
    {13, "RW_RSQ", 0, 0, false, kSfLarger},
    {20, "AIC", kSfSqErr, kSfSum, false, kSfSmaller},
    {21, "SBC", kSfSqErr, kSfSum, false, kSfSmaller},
    {22, "APC", kSfSqErr, kSfSum, false, kSfSmaller},
    {23, "AICC", kSfSqErr, kSfSum, false, kSfSmaller},
    {30, "MINERR", kSfErr, kSfMin, false, kSfSmaller},
    {31, "MAXERR", kSfErr, kSfMax, false, kSfSmaller},
    {32, "ME", kSfErr, kSfMean, false, kSfSmallerAbs},
    {33, "MAE", kSfAbsErr, kSfMean, false, kSfSmaller},
    {40, "MINPE", kSfPe, kSfMin, true, kSfSmaller},
    {41, "MAXPE", kSfPe, kSfMax, true, kSfSmaller},
    {42, "MPE", kSfPe, kSfMean, true, kSfSmaller},
    {43, "MAPE", kSfApe, kSfMean, true, kSfSmaller},
    {44, "MDAPE", kSfApe, kSfMedian, true, kSfSmaller},
    {45, "GMAPE", kSfApe, kSfGeoMean, true, kSfSmaller},
    {50, "MINSPE", kSfSpe, kSfMin, true, kSfSmaller},
    {51, "MAXSPE", kSfSpe, kSfMax, true, kSfSmaller},
    {52, "MSPE", kSfSpe, kSfMean, true, kSfSmaller},
    {53, "SMAPE", kSfAspe, kSfMean, true, kSfSmaller},
    {54, "MDASPE", kSfAspe, kSfMedian, true, kSfSmaller},
    {55, "GMASPE", kSfAspe, kSfGeoMean, true, kSfSmaller},
    {60, "MINRE", kSfRe, kSfMin, false, kSfSmaller},
    {61, "MAXRE", kSfRe, kSfMax, false, kSfSmaller},
    {62, "MRE", kSfRe, kSfMean, false, kSfSmaller},
    {63, "MRAE", kSfRae, kSfMean, false, kSfSmaller},
    {64, "MDRAE", kSfRae, kSfMedian, false, kSfSmaller},
    {65, "GMRAE", kSfRae, kSfGeoMean, false, kSfSmaller},
    {70, "MINPPE", kSfPpe, kSfMin, true, kSfSmaller},
    {71, "MAXPPE", kSfPpe, kSfMax, true, kSfSmaller},
    {72, "MPPE", kSfPpe, kSfMean, true, kSfSmaller},
    {73, "MAPPE", kSfAppe, kSfMean, true, kSfSmaller},
    {74, "MDAPPE", kSfAppe, kSfMedian, true, kSfSmaller},
    {75, "GMAPPE", kSfAppe, kSfGeoMean, true, kSfSmaller},
    {80, "MINAPES", kSfApes, kSfMin, true, kSfSmaller},
    {81, "MAXAPES", kSfApes, kSfMax, true, kSfSmaller},
    {82, "MAPES", kSfApes, kSfMean, true, kSfSmaller},
    {83, "MDAPES", kSfApes, kSfMedian, true, kSfSmaller},
    {84, "GMAPES", kSfApes, kSfGeoMean, true, kSfSmaller},
    {85, "MASE", kSfAse, kSfMean, false, kSfSmaller},
};

// The row of a criterion code, or null for an unknown code.
constexpr const SfCriterion* sfCriterion(int code) noexcept {
  for (const SfCriterion& c : kSfCriteria)
    if (c.code == code) return &c;
  return nullptr;
}

// --------------------------------------------------------------- routines

// Elementary errors of one kind into error[0..T-1] and, when aerror is not
// null, their absolute values (a missing error stays as it is). Result 0; 3
// when some element could not be divided and is missing or special; -2 for
// kind kSfAse when the actuals have no consecutive pair (error then holds
// |e|); -99 for a null actual, predict or error, T < 1, or an unknown kind.
int ztssfe(double holdout, const double* actual, const double* predict, long T, int type,
           double* error, double* aerror) noexcept;

// Aggregate of the non-missing elements of error[0..T-1]. stat is first set
// missing and n to 0; n then counts the non-missing elements (also when the
// aggregate fails). work (T doubles, may be error itself, which is then
// overwritten) serves the median only. Result 0; -2 the median's selection
// failed; -3 no non-missing element; -4 a sum ran past kSfSumMax, or a
// geometric mean past exp's range; -5 a negative value for the geometric
// mean; -99 null error, stat or n, T < 1, no work for a median, or an
// unknown type.
int ztssfa(const double* error, long T, int type, double* work, double* stat, long* n) noexcept;

// R-square (select 10), adjusted (11), Amemiya's adjusted (12) and
// random-walk R-square (13) of predict against actual. stat is missing
// unless the result is 0. -2 undefined (no prediction, a zero variance, too
// few observations for the parameters), -3 no actual, -4 overflow, -99 null
// pointers, T < 1 or another select.
int ztssfrs(double holdout, const double* actual, const double* predict, long T, long nparms,
            int select, double* stat) noexcept;

// Counts over the elements where actual, lower and upper are all present:
// n of them, lerror with actual < lower, uerror with actual > upper.
// Result 0; -99 for a null pointer (nothing written) or T < 1 (counts 0).
int ztssfcl(const double* actual, const double* lower, const double* upper, long T, long* lerror,
            long* uerror, long* n) noexcept;

// Every statistic of fit of predict against actual into stats. Positions
// whose predictions are missing at either end are trimmed off first; the
// relative errors, the random-walk R-square and the scaled error use the
// untrimmed vectors. The limit counts (lower, upper, total and their
// percentages) are left as the caller set them, except on -3. Result 0, or
// the last negative code of any step (a statistic that failed is missing,
// the others are computed all the same); -1 no memory (the statistics
// beyond mean, tss and sst missing); -3 no usable actual in the trimmed
// range (all statistics missing, the counts set); -99 null pointers or
// T < 0.
int ztssfme(double holdout, const double* actual, const double* predict, long T, long nparms,
            SF_STATS* stats) noexcept;

// The one statistic that criterion code select names (table kSfCriteria),
// without trimming and without allocation: work holds T doubles for the
// errors and the median. Result 0; 4 an information criterion (20, 21, 23)
// could not be formed; the negative code of the step that failed; -99 null
// pointers, T < 1 (stat untouched) or an unknown code (stat missing).
int ztssfm(double holdout, const double* actual, const double* predict, long T, long nparms,
           int select, double* work, double* stat) noexcept;

// 1 when stat2 is better than stat1 by criterion select, 0 when it isn't (a
// tie keeps the first), -1 when neither is present, -99 for an unknown code
// with both values present. A missing value is never better, whatever the
// code; for the information criteria a missing stat1 gives 1 even when
// stat2 is missing too.
int ztssfmc(double stat1, double stat2, int select) noexcept;

// Descriptive statistics of y[0..nobs-1]: counts, the shortest and longest
// run of missing values, min, max, mean, sample standard deviation (missing
// for one value) and sum. Returns n, the number of non-missing values. A
// null y is described as nobs missing values; a null stats gets nothing.
long ztssumm(const double* y, long nobs, SUMMSTATS* stats) noexcept;

}  // namespace qvt
