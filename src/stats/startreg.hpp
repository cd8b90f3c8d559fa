// Start-value regressions of the smoothing models: level, trend and seasonal
// terms fitted by least squares on the time index t = 1..n, in closed form.
// What the time index contributes to each season follows from n and ns alone,
// so one pass over the flagged observations corrects the sums and no design
// matrix is built.
//
// Common conventions:
//  - y has n values; an element counts when misflg[i] is 0, and the value of
//    a flagged element is never read.
//  - The season of element i is i mod ns: season 0 is the first element.
//  - Every output is optional: a null pointer means "not wanted".
//  - Results: 0 success; 1 success with a season short of data; -1 work
//    space could not be allocated; -2 no usable data; -3 no coefficient
//    wanted (ztsrdmy).
#pragma once

namespace qvt {

// Constant, trend, quadratic term and additive seasonal dummies.
//  ccoef: constant; tcoef: slope per time step; qcoef: quadratic term;
//  sdcoef: ns seasonal terms (only with ns > 2, else left missing);
//  res: n residuals y - fit for a non-negative result (flagged: missing).
// Every given output is first set to missing.
int ztsrdmy(const double* y, const char* misflg, long n, int ns, double* ccoef, double* tcoef,
            double* qcoef, double* sdcoef, double* res) noexcept;

// Constant, trend and multiplicative seasonal factors (ns entries averaging 1,
// each positive where a season has data). res: n residuals y - fit for a
// non-negative result. Outputs are written only on success.
int ztsrsdm(const double* y, const char* misflg, long n, int ns, double* ccoef, double* tcoef,
            double* sdcoef, double* res) noexcept;

}  // namespace qvt
