// The statistics of one demand-indexed vector, shared by the routines of the
// demand series (idseries.cpp defines them).
#pragma once

#include "intermittent/idseries.hpp"

namespace qvt::idsimpl {

// Statistics over the non-missing elements of v[0 .. n); avg divides by n.
// 0; -22 (everything reset) when there is none; -99 for null arguments.
int getstats(const double* v, long n, IDSSTATS* s) noexcept;
// n 0, everything else missing.
void resetstats(IDSSTATS* s) noexcept;

}  // namespace qvt::idsimpl
