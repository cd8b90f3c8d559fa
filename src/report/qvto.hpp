// Printed tables: one routine a table (or a small family), called from the
// run at its steps. Each decides by QVTCOM.print whether it is wanted, then
// describes the table to the host's output layer (Host::tableOpen and its
// companions) and closes it. The routines compute nothing that they don't
// show; the numbers come from the records the run has already filled.
#pragma once

#include <vector>

#include "run/qvtcom.hpp"
#include "smoothing/esmtypes.hpp"

namespace qvt {
struct ESMODEL;
struct IDMODEL;
struct IDSERIES;
}  // namespace qvt

namespace qvt {

// The manager's set-up and the "DataSet" table, once a step.
void qvtoint(QVTCOM* com);
// Closes the open output group; with a variable, opens the next one and
// prints its "Variable" table.
void qvtogrp(QVTCOM* com, const VAR* var);
// Closes the group of the series' prediction errors; with a variable, and
// when an error plot is asked for, opens it inside the series' group.
void qvtogre(QVTCOM* com, const VAR* var);
// "DescStats" of the series in hand, from outsum.stats.
void qvtovar(QVTCOM* com);
// "ForecastSummary" and "ForecastSummation": flag 0 opens them at a BY
// group's start, 1 writes the series' row, 2 closes them at the group's end.
void qvtosum(QVTCOM* com, int flag);
// "ModelSelection" over the n smoothing candidates that best compared.
void qvtosel(QVTCOM* com, const int* methods, const int* trnscodes, const double* criteria, int n);
// "ModelSelection" over the smoothing candidates of one demand component,
// printed only when there was more than one.
void qvtosec(QVTCOM* com, const ESMODEL* esm);
// "ModelSelection" between Croston's method and the average-demand form.
void qvtosei(QVTCOM* com, const IDMODEL* idm);
// "ParameterEstimates" of the model used: the smoothing model esm, or, when
// esm is null, the components of the intermittent model idm.
void qvtoest(QVTCOM* com, const WINMODEL* esm, const IDMODEL* idm);
// "SmoothedStates" (esm) or "DemandStates" (idm, when esm is null): the
// backcast, start and final states of the model.
void qvtosta(QVTCOM* com, const WINMODEL* esm, const IDMODEL* idm);
// "DemandSummary": the statistics of the demand intervals, sizes and
// average demands of the series.
void qvtoids(QVTCOM* com, const IDSERIES* ids);
// "DemandSeasonalSummary" of one component (0 intervals, 1 sizes,
// 2 average demands), one row a season; only with more than one season.
void qvtoiss(QVTCOM* com, const IDSERIES* ids, int comp);
// "Demands": the intermittent model's results by demand.
void qvtodem(QVTCOM* com, const IDMODEL* idm);
// The cells of row i of the Demands table (demand i, or the forecast of the
// next demand at i = nsample + nholdout); shared by the table and its plot.
void demandCells(const IDMODEL& idm, long i, std::vector<TableCell>* cells);
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
