// The smoothing model driver: the one face the smoothing family shows to the
// per-series run. Calling order: esmint, esmfit, esmprd, any number of
// esmsum, esmtrm.
#pragma once

#include "calendar/interval.hpp"
#include "smoothing/esmtypes.hpp"

namespace qvt {

// Builds the model record of one series for one method. y stays the
// caller's and must outlive the record. nseason below 0 asks for the cycle
// of the interval (seasonal methods); scode53 goes to the season coding.
// nbackcast 0 takes the start values from the whole series, otherwise from
// its last nbackcast times (the method's multiple) observations.
// 0 with *esm set; otherwise *esm is null and the code is -999 (bad
// argument or method), -100 (memory), -2 (fewer than 2 usable values),
// -7 (WINTERS on a value below tiny) or the start-value kernel's code.
int esmint(const double* y, long nobs, const INTERVAL* intv, double stdate, int nseason,
           int scode53, int method, long nbackcast, WINMODEL** esm) noexcept;

// Frees the record and everything it owns; null is allowed.
void esmtrm(WINMODEL* esm) noexcept;

// Estimates the weights, then their p values. The estimator's code (0, 90,
// -8, -100), or -999 for a null record or unknown method.
int esmfit(WINMODEL* esm) noexcept;

// Predictions, limits and forecasts of x (which may be the fit series with a
// different start or end) for n rows and lead forecasts into out (null
// vectors skipped; out itself may be null). Weights missing in parms take
// the estimates. 0, or -999, -100, -2, -7, -9.
int esmprd(WINMODEL* esm, const double* x, long n, double stdate, int scode53, double alpha,
           int lead, FOR_OUT* out) noexcept;

// Sum of the forecasts pred[start - 1] .. pred[lead - 1] (missing ones left
// out), its standard error and limits at alpha; each result may be null.
// 0, or -999 (arguments), -1 (memory), -99 (unknown method), -2 (no error
// variance, or psi weights too large).
int esmsum(WINMODEL* esm, const double* pred, int lead, int start, double alpha, double* spred,
           double* sstd, double* slower, double* supper) noexcept;

// Computes the start values again on the record as esmint does.
int esmsvi(WINMODEL* esm) noexcept;

}  // namespace qvt
