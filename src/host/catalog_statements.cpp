// Catalogue rows of the statements as the run reads them: the messages of
// the procedure, ID and FORECAST statements, the LEAD= limit, and the labels
// of models, USE= and transformations.
// Sorted by group and number.
#include "host/catalog.hpp"

namespace qvt {
namespace {

using enum Severity;

constexpr CatalogEntry kRows[] = {
    // --- group 743: messages of the statements ---
    {743, 2, Error, "No input data set: DATA= is not given and no earlier step of this run wrote one. Name the input with DATA=."},
    // --- group 743: labels of MODEL= ---
    {743, 1000, Note, "No Forecast"},
    {743, 1001, Note, "Simple Exponential Smoothing"},
    {743, 1002, Note, "Linear (Holt) Exponential Smoothing"},
    {743, 1003, Note, "Damped Trend Exponential Smoothing"},
    {743, 1004, Note, "Double (Brown) Exponential Smoothing"},
    {743, 1005, Note, "Seasonal Exponential Smoothing"},
    {743, 1006, Note, "Additive Winters Method"},
    {743, 1007, Note, "Multiplicative Winters Method"},
    {743, 1008, Note, "Multiplicative Seasonal Exponential Smoothing"},
    {743, 1020, Note, "Best Smoothing Model, after a Seasonality Test"},
    {743, 1021, Note, "Best Non-Seasonal Smoothing Model"},
    {743, 1022, Note, "Best Seasonal Smoothing Model"},
    {743, 1030, Note, "Intermittent Demand Model"},
    {743, 1050, Note, "Intermittent Demand or Smoothing Model, Chosen per Series"},
    {743, 1099, Note, "Unknown Model"},
    // --- group 743: labels of USE= ---
    {743, 1400, Note, "No Forecast Values"},
    {743, 1401, Note, "Predicted Values"},
    {743, 1402, Note, "Lower Confidence Limits"},
    {743, 1403, Note, "Upper Confidence Limits"},
    {743, 1499, Note, "Unknown Forecast Values"},
    // --- group 743: labels of TRANSFORM= ---
    {743, 1500, Note, "No Transformation"},
    {743, 1501, Note, "Logarithmic Transformation"},
    {743, 1502, Note, "Square Root Transformation"},
    {743, 1503, Note, "Logistic Transformation"},
    {743, 1504, Note, "Box-Cox Transformation"},
    {743, 1505, Note, "Automatic Transformation"},
    {743, 1599, Note, "Unknown Transformation"},
    // --- group 743: the statements into the run ---
    {743, 3001, Warning, "The time ID variable {1} is named in a FORECAST statement; it is not forecast. Remove it from the list."},
    {743, 3002, Warning, "The variable {1} is named more than once in the FORECAST statements; the first statement that names it is used. Remove the other mentions."},
    {743, 3003, Note, "Some variables of the FORECAST statements were left out; {1} series will be forecast."},
    {743, 3004, Warning, "TRANSFORM= is ignored with MODEL=CROSTON (or IDM): the intermittent demand model sets the transformations of its components in the IDM statement."},
    {743, 3005, Error, "No variable to forecast: the FORECAST statements name no variables. Add a FORECAST statement with the variables to forecast."},
    {743, 3006, Warning, "MODEL={1} needs a seasonal cycle, and the interval of the ID statement has none. Give SEASONALITY= or an interval with a cycle, or choose a model without seasons."},
    {743, 3007, Warning, "The variables of the FORECAST statement with MODEL={1} are not forecast."},
    {743, 3008, Error, "No series is left to forecast: the FORECAST statements name only BY or time ID variables, or variables that no statement could use."},
    {743, 3009, Warning, "ACCUMULATE= of a FORECAST statement is ignored without an ID statement: records are accumulated into time periods only. Add an ID statement with INTERVAL=."},
    {743, 3010, Warning, "ACCUMULATE= is given in some FORECAST statements but not in all, nor in the ID statement, so the run as a whole isn't accumulated. Give ACCUMULATE= in the ID statement, or in every FORECAST statement."},
    {743, 3011, Warning, "Trend statistics need accumulated periods: give ACCUMULATE= in the ID statement."},
    {743, 3012, Warning, "OUTTREND= is not written."},
    {743, 3013, Warning, "PRINT=TRENDS is not printed."},
    {743, 3014, Warning, "Season statistics need a seasonal cycle of at least two seasons, and the interval has none: give SEASONALITY= or an interval with a cycle."},
    {743, 3015, Warning, "OUTSEASON= is not written."},
    {743, 3016, Warning, "PRINT=SEASONS is not printed."},
    {743, 3017, Warning, "STARTSUM={1} is beyond LEAD=; the sums of the forecasts start at the first lead. Give a STARTSUM= of at most LEAD=."},
    {743, 3018, Note, "ALPHA= is below 0.000001 and is taken as 0.000001."},
    {743, 3019, Note, "ALPHA= is above 0.999999 and is taken as 0.999999."},
    {743, 3020, Error, "START= of the ID statement is a time or datetime value, but the interval counts dates. Write START= as a date, e.g. '01JAN2020'd, or choose a datetime interval such as DTMONTH."},
    {743, 3021, Error, "START= of the ID statement is a date, but the interval counts datetime values. Write START= as a datetime, e.g. '01JAN2020:00:00:00'dt, or choose a date interval."},
    {743, 3022, Error, "END= of the ID statement is a time or datetime value, but the interval counts dates. Write END= as a date, e.g. '31DEC2020'd, or choose a datetime interval such as DTMONTH."},
    {743, 3023, Error, "END= of the ID statement is a date, but the interval counts datetime values. Write END= as a datetime, e.g. '31DEC2020:00:00:00'dt, or choose a date interval."},
    {743, 3024, Error, "END= of the ID statement lies before START= (values shown with the format {1}). Give an END= at or after START=."},
    {743, 3025, Note, "The time frame runs from START={1} to END={2}: {3} periods (format {4})."},
    {743, 3026, Error, "START= and END= can't be used with an interval of observation numbers. Remove them, or give the ID statement a date or datetime interval."},
    {743, 3027, Warning, "INTERMITTENT= is used only with MODEL=BESTALL and is ignored with MODEL={1}."},
    {743, 3028, Warning, "PLOT=SEASONS is not drawn."},
    {743, 3029, Warning, "Season plots need a seasonal cycle of at least two seasons, and the interval has none: give SEASONALITY= or an interval with a cycle."},
    {743, 3030, Warning, "Performance statistics need hold-back periods: PRINT=PERFORMANCE, PERFORMANCESUMMARY and PERFORMANCEOVERALL are ignored without BACK= of at least 1."},
    {743, 3091, Warning, "FORMAT={1} of the ID statement is a character format and can't show a time ID; the default format of the interval is used."},
    // --- group 743: the IDM statement ---
    {743, 3100, Warning, "LEVELPARM={1} of INTERVAL= lies outside LEVELREST=({2} {3}); the level weight of the demand interval is estimated instead."},
    {743, 3101, Warning, "LEVELREST=({1} {2}) of INTERVAL= is not an ordered pair within {3} to {4}; the limits {5} and {6} are used."},
    {743, 3105, Warning, "TRENDPARM={1} of INTERVAL= lies outside TRENDREST=({2} {3}); the trend weight of the demand interval is estimated instead."},
    {743, 3106, Warning, "TRENDREST=({1} {2}) of INTERVAL= is not an ordered pair within {3} to {4}; the limits {5} and {6} are used."},
    {743, 3110, Warning, "DAMPPARM={1} of INTERVAL= lies outside DAMPREST=({2} {3}); the damping weight of the demand interval is estimated instead."},
    {743, 3111, Warning, "DAMPREST=({1} {2}) of INTERVAL= is not an ordered pair within {3} to {4}; the limits {5} and {6} are used."},
    {743, 3114, Warning, "BOUNDS=({1} {2}) of INTERVAL= has its lower bound above the upper one; the IDM statement is ignored and the defaults are used."},
    {743, 3115, Warning, "NOEST in INTERVAL= with METHOD=SIMPLE needs LEVELPARM=; the weights of the demand interval are estimated."},
    {743, 3116, Warning, "NOEST in INTERVAL= with METHOD=DOUBLE needs LEVELPARM=; the weights of the demand interval are estimated."},
    {743, 3117, Warning, "NOEST in INTERVAL= with METHOD=LINEAR needs LEVELPARM= and TRENDPARM=; the weights of the demand interval are estimated."},
    {743, 3118, Warning, "NOEST in INTERVAL= with METHOD=DAMPTREND needs LEVELPARM=, TRENDPARM= and DAMPPARM=; the weights of the demand interval are estimated."},
    {743, 3119, Warning, "NOEST in INTERVAL= with METHOD=BESTN needs LEVELPARM=, TRENDPARM= and DAMPPARM=; the weights of the demand interval are estimated."},
    {743, 3120, Warning, "LEVELPARM={1} of SIZE= lies outside LEVELREST=({2} {3}); the level weight of the demand size is estimated instead."},
    {743, 3121, Warning, "LEVELREST=({1} {2}) of SIZE= is not an ordered pair within {3} to {4}; the limits {5} and {6} are used."},
    {743, 3125, Warning, "TRENDPARM={1} of SIZE= lies outside TRENDREST=({2} {3}); the trend weight of the demand size is estimated instead."},
    {743, 3126, Warning, "TRENDREST=({1} {2}) of SIZE= is not an ordered pair within {3} to {4}; the limits {5} and {6} are used."},
    {743, 3130, Warning, "DAMPPARM={1} of SIZE= lies outside DAMPREST=({2} {3}); the damping weight of the demand size is estimated instead."},
    {743, 3131, Warning, "DAMPREST=({1} {2}) of SIZE= is not an ordered pair within {3} to {4}; the limits {5} and {6} are used."},
    {743, 3135, Warning, "NOEST in SIZE= with METHOD=SIMPLE needs LEVELPARM=; the weights of the demand size are estimated."},
    {743, 3136, Warning, "NOEST in SIZE= with METHOD=DOUBLE needs LEVELPARM=; the weights of the demand size are estimated."},
    {743, 3137, Warning, "NOEST in SIZE= with METHOD=LINEAR needs LEVELPARM= and TRENDPARM=; the weights of the demand size are estimated."},
    {743, 3138, Warning, "NOEST in SIZE= with METHOD=DAMPTREND needs LEVELPARM=, TRENDPARM= and DAMPPARM=; the weights of the demand size are estimated."},
    {743, 3139, Warning, "NOEST in SIZE= with METHOD=BESTN needs LEVELPARM=, TRENDPARM= and DAMPPARM=; the weights of the demand size are estimated."},
    {743, 3140, Warning, "LEVELPARM={1} of AVERAGE= lies outside LEVELREST=({2} {3}); the level weight of the average demand is estimated instead."},
    {743, 3141, Warning, "LEVELREST=({1} {2}) of AVERAGE= is not an ordered pair within {3} to {4}; the limits {5} and {6} are used."},
    {743, 3145, Warning, "TRENDPARM={1} of AVERAGE= lies outside TRENDREST=({2} {3}); the trend weight of the average demand is estimated instead."},
    {743, 3146, Warning, "TRENDREST=({1} {2}) of AVERAGE= is not an ordered pair within {3} to {4}; the limits {5} and {6} are used."},
    {743, 3150, Warning, "DAMPPARM={1} of AVERAGE= lies outside DAMPREST=({2} {3}); the damping weight of the average demand is estimated instead."},
    {743, 3151, Warning, "DAMPREST=({1} {2}) of AVERAGE= is not an ordered pair within {3} to {4}; the limits {5} and {6} are used."},
    {743, 3155, Warning, "NOEST in AVERAGE= with METHOD=SIMPLE needs LEVELPARM=; the weights of the average demand are estimated."},
    {743, 3156, Warning, "NOEST in AVERAGE= with METHOD=DOUBLE needs LEVELPARM=; the weights of the average demand are estimated."},
    {743, 3157, Warning, "NOEST in AVERAGE= with METHOD=LINEAR needs LEVELPARM= and TRENDPARM=; the weights of the average demand are estimated."},
    {743, 3158, Warning, "NOEST in AVERAGE= with METHOD=DAMPTREND needs LEVELPARM=, TRENDPARM= and DAMPPARM=; the weights of the average demand are estimated."},
    {743, 3159, Warning, "NOEST in AVERAGE= with METHOD=BESTN needs LEVELPARM=, TRENDPARM= and DAMPPARM=; the weights of the average demand are estimated."},
    {743, 3160, Warning, "In the IDM statement, {1} breaks a rule of the intermittent-demand settings (a lower bound above the upper one, a weight outside its limits, or the like), so the whole statement was dropped and the default settings stand. Correct {1}."},
    // --- group 773: the LEAD= limit ---
    {773, 101, Warning, "LEAD={1} is above the limit of {2} periods; {2} is used."},
    {773, 102, Error, "LEAD={1} is above the limit of {2} periods. Give a smaller LEAD=."},
};

}  // namespace

std::span<const CatalogEntry> catalogStatements() noexcept { return kRows; }

}  // namespace qvt
