// Catalogue rows of the driver and the per-series run.
// Sorted by group and number.
#include "host/catalog.hpp"

namespace qvt {
namespace {

using enum Severity;

constexpr CatalogEntry kRows[] = {
    {743, 101, Note, "{1} series were processed."},
    {743, 102, Note, "A model was requested for {1} of them."},
    {743, 103, Note, "Series that failed: {1}. A failed series keeps its output rows, with missing forecasts; the messages above say why it failed."},
    {743, 110, Warning, "A BY group has no more periods than BACK= leaves out, so none of its series was forecast and it has no output rows. Lower BACK= or give the group more data."},
    {743, 120, Note, "More series failed than MAXERROR= allows messages for; the messages of the later failures were left out. Raise MAXERROR= to see them all."},
    {743, 2000, Error, "Out of memory while forecasting the series {1}; it has no output rows. Raise --memsize or use fewer periods per BY group."},
    {743, 2001, Warning, "The series {1} has fewer than two usable values in the fit range, so no model was fitted and its forecasts are missing. Check the data, START=, END=, BACK=, ZEROMISS= and NBACKCAST=."},
    {743, 2002, Warning, "The series {1} has a value of zero, below zero or too close to zero, which a multiplicative model can't take; its forecasts are missing. Use an additive model for it."},
    {743, 2003, Warning, "The model of the series {1} could not be estimated; its forecasts are missing. Try a simpler MODEL=, or check the data for extreme values."},
    {743, 2007, Warning, "The transformation of the series {1} failed, so no model was fitted and its forecasts are missing. Check that its values suit TRANSFORM=, or use TRANSFORM=NONE."},
    {743, 2050, Warning, "No model could be chosen for the series {1}; its forecasts are missing. Name one model with MODEL=, or lower HOLDOUT= or HOLDOUTPCT= so that the candidates keep enough values to fit."},
    {743, 2051, Warning, "Out of memory while choosing a model for the series {1}; its forecasts are missing. Raise --memsize, or name one model with MODEL=."},
    {743, 2052, Warning, "The series {1} has no usable values to choose a model on; its forecasts are missing."},
    {743, 2053, Warning, "The candidate models of the series {1} could not be compared; its forecasts are missing. Name one model with MODEL=."},
    {743, 2054, Warning, "The transformation of the series {1} failed while its model was being chosen; its forecasts are missing. Check that its values suit TRANSFORM=, or use TRANSFORM=NONE."},
    {743, 2055, Warning, "None of the candidate models could be set up for the series {1} (too few values, or values a multiplicative model can't take); its forecasts are missing."},
    {743, 2056, Warning, "None of the candidate models could be estimated for the series {1}; its forecasts are missing. Name a simpler model with MODEL=."},
    {743, 2057, Warning, "None of the candidate models of the series {1} could be measured by CRITERION=, on the hold-out or on the fit; its forecasts are missing. Try another CRITERION= or a shorter HOLDOUT=."},
    {743, 2058, Warning, "The model choice for the series {1} failed; its forecasts are missing. Name one model with MODEL=."},
};

}  // namespace

std::span<const CatalogEntry> catalogRun() noexcept { return kRows; }

}  // namespace qvt
