// Catalogue rows of the intermittent-demand models (group 881): the
// messages of the demand series and of the model, and the labels of models.
// Sorted by group and number.
//
// The demand series and the model share message numbers with different
// meanings, and the name argument of some is the time ID rather than the
// variable, so those texts name both causes. Each failure comes in two
// forms: the even number without a name, the odd one with {1}.
#include "host/catalog.hpp"

namespace qvt {
namespace {

using enum Severity;

constexpr CatalogEntry kRows[] = {
    // --- labels of components and models ---
    {881, 1001, Note, "Simple Exponential Smoothing"},
    {881, 1002, Note, "Linear Exponential Smoothing"},
    {881, 1003, Note, "Damped Trend Exponential Smoothing"},
    {881, 1004, Note, "Double Exponential Smoothing"},
    {881, 1021, Note, "Best of Simple, Linear and Damped Trend Exponential Smoothing"},
    {881, 1031, Note, "Croston's Method (Intervals: {1}; Sizes: {2})"},
    {881, 1032, Note, "Average Demand (Average Demand: {1})"},
    {881, 1050, Note, "Best of Croston's Method and Average Demand"},
    {881, 1099, Note, "Unknown Intermittent Demand Model"},
    {881, 1501, Note, "Log"},
    {881, 1502, Note, "Square Root"},
    {881, 1503, Note, "Logistic"},
    {881, 1504, Note, "Box-Cox"},
    {881, 1505, Note, "Automatic"},
    {881, 1599, Note, "Unknown Transformation"},
    // --- the demand series: a failure without a message of its own ---
    {881, 8090, Warning, "The demand series could not be formed (an unexpected failure)."},
    {881, 8091, Warning, "The demand series of {1} could not be formed (an unexpected failure)."},
    {881, 8092, Note, "The series was not forecast by an intermittent-demand model; its forecasts are missing."},
    {881, 8093, Note, "The series {1} was not forecast by an intermittent-demand model; its forecasts are missing."},
    // --- failures of the demand series and of the model ---
    {881, 8100, Warning, "Out of memory while modelling an intermittent series. Raise --memsize or use fewer periods per BY group."},
    {881, 8101, Warning, "Out of memory while modelling the intermittent series {1}. Raise --memsize or use fewer periods per BY group."},
    {881, 8102, Warning, "The intermittent-demand model could not be set up: the interval of the time ID gives no seasonal cycle, or no demand series was given to the model. Check INTERVAL= of the ID statement."},
    {881, 8103, Warning, "The intermittent-demand model could not be set up for {1}: the interval of the time ID gives no seasonal cycle, or no demand series was given to the model. Check INTERVAL= of the ID statement."},
    {881, 8104, Warning, "The demand series could not be formed: a time ID is missing, out of order or can't be aligned to the interval, or the series holds no demand. Check the ID variable and the data."},
    {881, 8105, Warning, "The demand series could not be formed for {1}: a time ID is missing, out of order or can't be aligned to the interval, or the series holds no demand. Check the ID variable and the data."},
    {881, 8106, Warning, "The series has nothing to fit: all its values are missing, or no demand lies in its fit sample. Check the data, or lower HOLDOUT= or BACK=."},
    {881, 8107, Warning, "The series {1} has nothing to fit: all its values are missing, or no demand lies in its fit sample. Check the data, or lower HOLDOUT= or BACK=."},
    {881, 8108, Warning, "The series could not be modelled: one of its values is too extreme, or the model has no settings, or they give a smoothing weight outside its bounds. Check the data and the IDM statement."},
    {881, 8109, Warning, "The series {1} could not be modelled: one of its values is too extreme, or the model has no settings, or they give a smoothing weight outside its bounds. Check the data and the IDM statement."},
    {881, 8110, Warning, "The series could not be modelled: it holds no demand, or a transformation of its demand components failed. Check the data, or write TRANSFORM=NONE in INTERVAL=( ), SIZE=( ) and AVERAGE=( ) of the IDM statement."},
    {881, 8111, Warning, "The series {1} could not be modelled: it holds no demand, or a transformation of its demand components failed. Check the data, or write TRANSFORM=NONE in INTERVAL=( ), SIZE=( ) and AVERAGE=( ) of the IDM statement."},
    {881, 8112, Warning, "The series could not be modelled: no demand lies in its fit sample, or the forecast bounds of the demand intervals are not valid (BOUNDS= in INTERVAL=( ) needs a lower bound of at least 1). Check the data, HOLDOUT= and BACK=, and the IDM statement."},
    {881, 8113, Warning, "The series {1} could not be modelled: no demand lies in its fit sample, or the forecast bounds of the demand intervals are not valid (BOUNDS= in INTERVAL=( ) needs a lower bound of at least 1). Check the data, HOLDOUT= and BACK=, and the IDM statement."},
    {881, 8114, Warning, "The series could not be modelled: a demand component has a value at or below zero, which its transformation can't take, or the forecast bounds of the demand sizes are not valid. Choose another TRANSFORM= for the component, or correct its BOUNDS=."},
    {881, 8115, Warning, "The series {1} could not be modelled: a demand component has a value at or below zero, which its transformation can't take, or the forecast bounds of the demand sizes are not valid. Choose another TRANSFORM= for the component, or correct its BOUNDS=."},
    {881, 8116, Warning, "The series could not be modelled: the transformation of a demand component failed, or the forecast bounds of the average demand are not valid. Choose another TRANSFORM= for the component, or correct its BOUNDS=."},
    {881, 8117, Warning, "The series {1} could not be modelled: the transformation of a demand component failed, or the forecast bounds of the average demand are not valid. Choose another TRANSFORM= for the component, or correct its BOUNDS=."},
    // --- failures of the model and its components ---
    {881, 8118, Warning, "No intermittent-demand model could be chosen for the series. Give METHOD= and TRANSFORM= in INTERVAL=( ), SIZE=( ) or AVERAGE=( ) of the IDM statement."},
    {881, 8119, Warning, "No intermittent-demand model could be chosen for the series {1}. Give METHOD= and TRANSFORM= in INTERVAL=( ), SIZE=( ) or AVERAGE=( ) of the IDM statement."},
    {881, 8120, Warning, "No smoothing form could be chosen for the demand intervals. Give METHOD= in INTERVAL=( ) of the IDM statement."},
    {881, 8121, Warning, "No smoothing form could be chosen for the demand intervals of {1}. Give METHOD= in INTERVAL=( ) of the IDM statement."},
    {881, 8122, Warning, "No smoothing form could be chosen for the demand sizes. Give METHOD= in SIZE=( ) of the IDM statement."},
    {881, 8123, Warning, "No smoothing form could be chosen for the demand sizes of {1}. Give METHOD= in SIZE=( ) of the IDM statement."},
    {881, 8124, Warning, "No smoothing form could be chosen for the average demand. Give METHOD= in AVERAGE=( ) of the IDM statement."},
    {881, 8125, Warning, "No smoothing form could be chosen for the average demand of {1}. Give METHOD= in AVERAGE=( ) of the IDM statement."},
    {881, 8126, Warning, "The start values of a demand component could not be computed, or the rounding of the forecasts is not valid. Try METHOD=SIMPLE, or check the IDM statement."},
    {881, 8127, Warning, "The start values of a demand component of {1} could not be computed, or the rounding of the forecasts is not valid. Try METHOD=SIMPLE, or check the IDM statement."},
    {881, 8128, Warning, "The start values of the demand intervals could not be computed. Try a simpler smoothing form for the intervals."},
    {881, 8129, Warning, "The start values of the demand intervals of {1} could not be computed. Try a simpler smoothing form for the intervals."},
    {881, 8130, Warning, "The start values of the demand sizes could not be computed. Try a simpler smoothing form for the sizes."},
    {881, 8131, Warning, "The start values of the demand sizes of {1} could not be computed. Try a simpler smoothing form for the sizes."},
    {881, 8132, Warning, "The start values of the average demand could not be computed. Try a simpler smoothing form for the average demand."},
    {881, 8133, Warning, "The start values of the average demand of {1} could not be computed. Try a simpler smoothing form for the average demand."},
    {881, 8134, Warning, "The intermittent-demand model could not be estimated, or it has too few demands for its smoothing form (forms other than SIMPLE need at least 3). Choose METHOD=SIMPLE, or give the series more data."},
    {881, 8135, Warning, "The intermittent-demand model of {1} could not be estimated, or it has too few demands for its smoothing form (forms other than SIMPLE need at least 3). Choose METHOD=SIMPLE, or give the series more data."},
    {881, 8136, Warning, "The smoothing weights of the demand intervals could not be estimated. Try a simpler METHOD=, or fix the weights with LEVELPARM= and NOEST."},
    {881, 8137, Warning, "The smoothing weights of the demand intervals of {1} could not be estimated. Try a simpler METHOD=, or fix the weights with LEVELPARM= and NOEST."},
    {881, 8138, Warning, "The smoothing weights of the demand sizes could not be estimated. Try a simpler METHOD=, or fix the weights with LEVELPARM= and NOEST."},
    {881, 8139, Warning, "The smoothing weights of the demand sizes of {1} could not be estimated. Try a simpler METHOD=, or fix the weights with LEVELPARM= and NOEST."},
    {881, 8140, Warning, "The smoothing weights of the average demand could not be estimated. Try a simpler METHOD=, or fix the weights with LEVELPARM= and NOEST."},
    {881, 8141, Warning, "The smoothing weights of the average demand of {1} could not be estimated. Try a simpler METHOD=, or fix the weights with LEVELPARM= and NOEST."},
    {881, 8142, Warning, "The forecasts of a demand component could not be computed. Try a simpler smoothing form."},
    {881, 8143, Warning, "The forecasts of a demand component of {1} could not be computed. Try a simpler smoothing form."},
    {881, 8144, Warning, "The forecasts of the demand intervals could not be computed. Try a simpler smoothing form for the intervals."},
    {881, 8145, Warning, "The forecasts of the demand intervals of {1} could not be computed. Try a simpler smoothing form for the intervals."},
    {881, 8146, Warning, "The forecasts of the demand sizes could not be computed. Try a simpler smoothing form for the sizes."},
    {881, 8147, Warning, "The forecasts of the demand sizes of {1} could not be computed. Try a simpler smoothing form for the sizes."},
    {881, 8148, Warning, "The forecasts of the average demand could not be computed. Try a simpler smoothing form for the average demand."},
    {881, 8149, Warning, "The forecasts of the average demand of {1} could not be computed. Try a simpler smoothing form for the average demand."},
    {881, 8150, Warning, "The forecasts of a demand component could not be transformed back. Choose another TRANSFORM=, or TRANSFORM=NONE."},
    {881, 8151, Warning, "The forecasts of a demand component of {1} could not be transformed back. Choose another TRANSFORM=, or TRANSFORM=NONE."},
    {881, 8152, Warning, "The forecasts of the demand intervals could not be transformed back. Choose another transformation for the intervals."},
    {881, 8153, Warning, "The forecasts of the demand intervals of {1} could not be transformed back. Choose another transformation for the intervals."},
    {881, 8154, Warning, "The forecasts of the demand sizes could not be transformed back. Choose another transformation for the sizes."},
    {881, 8155, Warning, "The forecasts of the demand sizes of {1} could not be transformed back. Choose another transformation for the sizes."},
    {881, 8156, Warning, "The forecasts of the average demand could not be transformed back. Choose another transformation for the average demand."},
    {881, 8157, Warning, "The forecasts of the average demand of {1} could not be transformed back. Choose another transformation for the average demand."},
    {881, 8158, Warning, "The intermittent-demand model has no demands to fit in the range asked for. Lower HOLDOUT= or BACK=."},
    {881, 8159, Warning, "The intermittent-demand model of {1} has no demands to fit in the range asked for. Lower HOLDOUT= or BACK=."},
    {881, 8170, Warning, "The statistics of fit of the intermittent-demand model could not be computed; they are missing."},
    {881, 8171, Warning, "The statistics of fit of the intermittent-demand model of {1} could not be computed; they are missing."},
    {881, 8172, Warning, "The statistics of the BACK= range of the intermittent-demand model could not be computed; they are missing."},
    {881, 8173, Warning, "The statistics of the BACK= range of the intermittent-demand model of {1} could not be computed; they are missing."},
    {881, 8180, Warning, "The intermittent-demand model failed for a reason that has no message of its own."},
    {881, 8181, Warning, "The intermittent-demand model of {1} failed for a reason that has no message of its own."},
    {881, 8182, Note, "Its forecasts are missing. Try MODEL=BESTALL, or a smoothing model, for this series."},
    {881, 8183, Note, "The forecasts of {1} are missing. Try MODEL=BESTALL, or a smoothing model, for this series."},
    {881, 8184, Note, "The series was not forecast by the intermittent-demand model; its forecasts are missing."},
    {881, 8185, Note, "The series {1} was not forecast by the intermittent-demand model; its forecasts are missing."},
};

}  // namespace

std::span<const CatalogEntry> catalogIntermittent() noexcept { return kRows; }

}  // namespace qvt
