// Catalogue rows of output data sets and the series spool.
// Sorted by group and number.
#include "host/catalog.hpp"

namespace qvt {
namespace {

using enum Severity;

constexpr CatalogEntry kRows[] = {
    {743, 3, Error, "Out of memory while setting up the output data sets and the input buffers; no data was read. Raise the memory budget (--memsize) or ask for fewer output data sets."},
    {743, 40, Error, "A temporary spool file of the series failed; the step ends because its rows can no longer be trusted. Check the free space of the temporary folder ($TMPDIR)."},
    {743, 41, Note, "The data set {1} asked for by {2} is not written by this version; it was left out."},
    {743, 4000, Note, "Parameter estimates of {1}"},
    {743, 4001, Note, "Variable name"},
    {743, 4002, Note, "Transformation"},
    {743, 4003, Note, "Model"},
    {743, 4004, Note, "Parameter"},
    {743, 4005, Note, "Estimate"},
    {743, 4006, Note, "Standard error"},
    {743, 4007, Note, "t value"},
    {743, 4008, Note, "Approximate p value (two-sided)"},
    {743, 4100, Note, "Forecasts of {1}"},
    {743, 4101, Note, "Variable name"},
    {743, 4102, Note, "Time ID"},
    {743, 4103, Note, "Actual value"},
    {743, 4104, Note, "Predicted value"},
    {743, 4105, Note, "Lower confidence limit"},
    {743, 4106, Note, "Upper confidence limit"},
    {743, 4107, Note, "Prediction error (actual minus predicted)"},
    {743, 4108, Note, "Standard error of the prediction"},
    {743, 4600, Note, "Model components of {1}"},
    {743, 4601, Note, "Variable name"},
    {743, 4603, Note, "Actual value"},
    {743, 4604, Note, "Predicted value"},
    {743, 4605, Note, "Smoothed level"},
    {743, 4606, Note, "Smoothed trend"},
    {743, 4607, Note, "Seasonal component"},
    {743, 4608, Note, "Prediction error (actual minus predicted)"},
    {743, 4610, Note, "Transformation"},
    {743, 4611, Note, "Model"},
};

}  // namespace

std::span<const CatalogEntry> catalogOutput() noexcept { return kRows; }

}  // namespace qvt
