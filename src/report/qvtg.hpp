// Plots: each routine writes one hidden data table of a series, then names
// the graphs that PLOT= asks for, each with its title and the few named
// values its renderer needs. No picture is computed here; the host draws
// from the table. The only computation of its own is that of the tick
// lists of the frequency axes.
#pragma once

#include "intermittent/idmodel.hpp"
#include "run/qvtcom.hpp"
#include "smoothing/esmtypes.hpp"

namespace qvt {

// "ModelPlots": the fit of the smoothing model and the error plots.
void qvtgmod(QVTCOM* com, const FOR_OUT* fore, int method, int nparms);
// "ForecastPlots": type 0 forecasts only, 1 forecasts over the data, 2 the
// model's predictions over the whole frame.
void qvtgfor(QVTCOM* com, const FOR_OUT* fore, int method, int type);
// "DemandsPlot": the demands of an intermittent series.
void qvtgdem(QVTCOM* com, const IDMODEL* idm);
// The stocking plots of an intermittent series ("StockingPlots") are not
// drawn: their columns are named, but not where their values come from.

// The number of autocorrelation lags the error plots show for a series of
// nobs values and that cycle length.
long plotLags(int seasonality, long nobs) noexcept;

// The two characters of the confidence level of alpha (" 5", "95") into
// calpha[0..1], with calpha[2] the terminator. A missing alpha counts as 0.05.
void qvtocl(double alpha, char* calpha) noexcept;

// The tick values and labels of the period axis of a periodogram over the
// frequencies 0 to maxfreq, as the graph template's list texts. Always 0.
int ztsGetPeriodTickList(long n, int seasonality, double maxfreq, u_slabel* tvl, u_slabel* tdl,
                         double* seasFreqOut) noexcept;
// The tick values and labels, as fractions of pi, of the frequency axis.
// Always 0.
int ztsGetFrequencyTickList(long n, int seasonality, double maxfreq, u_slabel* tvl, u_slabel* tdl) noexcept;

}  // namespace qvt
