// Printed tables: one routine a table (or a small family), called from the
// run at its steps. Each decides by QVTCOM.print whether it is wanted, then
// describes the table to the host's output layer (Host::tableOpen and its
// companions) and closes it. The routines compute nothing that they don't
// show; the numbers come from the records the run has already filled.
#pragma once

#include "run/qvtcom.hpp"
#include "smoothing/esmtypes.hpp"

namespace qvt {

// The manager's set-up and the "DataSet" table, once a step.
void qvtoint(QVTCOM* com);
// Closes the open output group; with a variable, opens the next one and
// prints its "Variable" table.
void qvtogrp(QVTCOM* com, const VAR* var);
// "DescStats" of the series in hand, from outsum.stats.
void qvtovar(QVTCOM* com);
// "ForecastSummary" and "ForecastSummation": flag 0 opens them at a BY
// group's start, 1 writes the series' row, 2 closes them at the group's end.
void qvtosum(QVTCOM* com, int flag);
// "ModelSelection" over the n smoothing candidates that best compared.
void qvtosel(QVTCOM* com, const int* methods, const int* trnscodes, const double* criteria, int n);
// "ParameterEstimates" of the smoothing model used.
void qvtoest(QVTCOM* com, const WINMODEL* esm);
// "SmoothedStates": the backcast, start and final states of the model.
void qvtosta(QVTCOM* com, const WINMODEL* esm);
// "FitStatistics" (region 0) or "PerformanceStatistics" (any other region)
// from outstat.stats.
void qvtosof(QVTCOM* com, int region);
// "Forecasts" of the series in hand.
void qvtofor(QVTCOM* com, const FOR_OUT* fore, int method);
// "TrendStatistics" and "SeasonStatistics" from trend.stats.
void qvtotre(QVTCOM* com);
void qvtosea(QVTCOM* com);
// "Performance": the errors of the series in hand over the BACK= range, from
// the collector outcps.cp after its series close.
void qvtocpo(QVTCOM* com);
// "PerformanceSummary" (where 0, the BY group) or "PerformanceOverall" (any
// other where, the run), read through outcps.forback.
void qvtocps(QVTCOM* com, int where);
// Label of horizon column i of the BACK= range: the time of its period with
// a time ID, else catalogue text `text` with the horizon's number.
std::string horizonLabel(QVTCOM* com, long i, int text);

// Decimals of the forecast columns for the values of the n rows of the
// given vectors (null vectors are skipped): kForFree, or 0 to 7.
inline constexpr int kForFree = 84;
int forformat(const double* const* vecs, int nvecs, long first, long last) noexcept;
// Width of an "Obs" column whose largest number is tobs.
int obsformat(double tobs) noexcept;
// The two-character confidence text of ALPHA= ("95", " 1").
std::string confidenceText(double alpha);

}  // namespace qvt
