// Automatic choice among smoothing methods: fit each candidate, score its
// predictions in the scale of the data by one criterion of fit, keep the
// best.
#pragma once

#include "calendar/interval.hpp"
#include "smoothing/esmtypes.hpp"

namespace qvt {

// Fits every method of methods[0..nmethods-1] to y (transformed first by
// trnstype, trnsparm when trnstype is not 0, so that every candidate sees the
// same series) and returns the index of the one that forecasts best by
// criterion select (a code of kSfCriteria).
//  - holdout > 0: each candidate is fitted on the first nobs - holdout values
//    and judged on its forecasts of the held-back ones alone; the winner must
//    also fit the whole series, or the next best is taken. holdout < 0 counts
//    as 0, and at most nobs - 2 values may be held back.
//  - holdout 0: judged on the one-step predictions of the whole series, with
//    the criterion adjusted for the number of weights.
//  - trnstype is a code of TransformCode other than AUTO, which the caller
//    settles first. trnsopt says how predictions come back from a
//    transformation: 1 plain inverse, 2 mean, 3 median, any other value not
//    at all.
//  - intv, stdate, nseason, scode53, nbackcast as for esmint; lead is the
//    run's lead, against which a WINTERS winner's forecasts are checked.
//  - criteria (nmethods entries; may be null) receives each candidate's
//    criterion, missing for a candidate that fell out.
//  - esm, when not null, receives the winner's record as fitted on
//    nobs - holdout values (the caller frees it with esmtrm); it is null on
//    every failure.
// Ties keep the earlier candidate, so the order of methods breaks them.
// Result: the index, or -999 (bad arguments, an unknown select or trnstype,
// holdout or lead beyond an int), -1 out of memory (the caller reports it to
// the host, as it does esmint's -100), -4 the transformation failed, -5 no
// candidate could be set up, -6 none could be fitted, -7 none could be
// evaluated or none was comparable.
int esmbest(const double* y, long nobs, long lead, const INTERVAL* intv, double stdate, int nseason,
            int scode53, int select, long holdout, long nbackcast, const int* methods, int nmethods,
            int trnstype, double trnsparm, int trnsopt, double* criteria, WINMODEL** esm) noexcept;

}  // namespace qvt
