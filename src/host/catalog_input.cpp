// Catalogue rows of BY-group input, time ID checks (743) and time ID positions (882).
// Sorted by group and number.
#include "host/catalog.hpp"

namespace qvt {
namespace {

using enum Severity;

constexpr CatalogEntry kRows[] = {
    // 743: BY-group input and time ID checks.
    {743, 5, Warning, "The time ID variable {1} is missing at observation {2} of {3}; the observation is skipped. Give every observation a time ID value."},
    {743, 6, Error, "The time ID value {1}={2} at observation {3} of {4} repeats the one before it; the BY group is skipped. Remove the duplicate observations, or give ACCUMULATE= to combine them."},
    {743, 7, Error, "The data set {1} is not sorted by the time ID at observation {2}: {3}={4} is followed by {5}={6}; the BY group is skipped. Sort the data by the BY variables and the time ID, or give NOTSORTED in the ID statement."},
    {743, 8, Error, "The time ID value {1}={2} at observation {3} of {4} lies too far from the other time IDs to count the intervals between them, or, for a custom interval, in a gap between the rows of its calendar (value {5}); the BY group is skipped. Check the time ID values and the interval."},
    {743, 10, Warning, "Periods of interval {4} missing before observation {2} of {3}: {1}, between {5}={6} and {7}={8}. They are treated as missing values; check the data or the interval."},
    {743, 11, Warning, "Ten gaps have been reported; further gaps in this step are counted but not reported."},
    {743, 14, Warning, "Values larger in magnitude than {1} were found in the input and are treated as missing. Rescale the variables if these values are real."},
    {743, 25, Error, "The BY group has more observations than the procedure can hold; it is skipped. Split the data into smaller BY groups."},
    {743, 30, Error, "Observation {1} of {2} falls into the same {3} interval as the one before it ({4}={5} and {6}={7}); the BY group is skipped. Give ACCUMULATE= to combine observations of one interval, or a finer interval than {8}."},
    {743, 31, Error, "The time frame of the BY group, with START=, END= and LEAD=, has more periods than the procedure can hold; it is skipped. Check START=, END=, LEAD= and the interval."},
    {743, 33, Note, "With INTERVAL={1} the values of the time ID variable {2} must lie in different intervals unless ACCUMULATE= says how to combine them."},
    {743, 34, Warning, "The interval {1} counts days, but the time ID variable {2} seems to hold datetime values (seconds). Check the interval of the ID statement; a DT interval such as DT{1} may be meant."},
    {743, 36, Note, "The BY group is skipped because of the time ID problem above."},
    {743, 44, Warning, "The BY group has only one usable observation; a model may not be fitted to it."},
    {743, 45, Error, "The BY group has no usable observation; it is skipped. Check the time ID values, START= and END=."},
    {743, 50, Warning, "The values of the time ID variable {1} leave gaps, listed below."},
    {743, 51, Warning, "No observation for the period {2}={3} ({1})."},
    {743, 52, Note, "The periods above have no observation for the interval {1} and are treated as missing values."},
    {743, 55, Error, "The time ID variable {1} has {2} values that fall into an interval {3} already taken, listed below; the BY group is skipped."},
    {743, 56, Error, "Several observations for the period of {2}={3}."},
    {743, 57, Error, "Give ACCUMULATE= to combine observations of one {1} interval, or remove the duplicate values of {2}."},
    // 882: time ID positions.
    {882, 1004, Error, "A time ID lies too far from the start of the series to be given a position: the count of intervals exceeds 2 to the 53rd. Check the time ID values and the interval of the ID statement."},
    {882, 1012, Error, "The time ID variable {1} of {2}.{3} has a missing value. Remove the observations without a time ID or give them one; the interval is {4}."},
    {882, 1014, Error, "The custom interval {4} has no period for a step of the time frame of variable {1} of {2}.{3}; the BY group is skipped. Extend the custom calendar to cover START=, END= and LEAD=."},
    {882, 1015, Error, "A value of the time ID variable {1} of {2}.{3} lies outside the custom interval {4}, or its interval has an open end. Extend the custom calendar to cover the data."},
    {882, 1016, Error, "A value of the time ID variable {1} of {2}.{3} is outside the calendar or can't be placed on the interval {4}. Check the time ID values and that they are dates or datetimes as the interval expects."},
    {882, 1017, Error, "The time ID variable {1} of {2}.{3} could not be positioned on the interval {4}."},
    {882, 1018, Error, "A period of the time frame of variable {1} of {2}.{3} lies beyond the calendar for the interval {4}; the BY group is skipped. Check START=, END= and LEAD=."},
    {882, 1020, Error, "The time ID variable {1} of {2}.{3} can't be used with the interval {4}."},
    {882, 1022, Error, "The custom interval {4} can't be used for the time ID variable {1} of {2}.{3}. Check that the calendar data set named for it exists and covers the data."},
    {882, 1032, Error, "A time ID value is missing. Remove the observations without a time ID or give them one."},
    {882, 1035, Error, "A time ID value lies outside its custom interval, or its interval has an open end. Extend the custom calendar to cover the data."},
    {882, 1036, Error, "A time ID value is outside the calendar or can't be placed on the interval. Check the time ID values and the interval."},
    {882, 1037, Error, "The time ID values could not be positioned on the interval."},
    {882, 1040, Error, "The time ID values can't be used with the interval."},
    {882, 1042, Error, "The custom interval can't be used for these time ID values. Check that the calendar data set named for it exists and covers the data."},
};

}  // namespace

std::span<const CatalogEntry> catalogInput() noexcept { return kRows; }

}  // namespace qvt
