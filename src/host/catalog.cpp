#include "host/catalog.hpp"

#include <algorithm>
#include <array>
#include <cstdio>

namespace qvt {
namespace {

using enum Severity;

// Groups: 743 the procedure's own messages and labels, 881 run information and
// intermittent models, 882 time ID positioning, 773 the LEAD= limit, 129 the
// parser, 900 the host layer (command line, data sets, pools, spools).
// Keep the rows of every part sorted by group and number: catalogFind
// searches each by halving. This part holds the parser's and the host's own
// rows; the engine's stages keep theirs in catalog_<stage>.cpp.
constexpr CatalogEntry kCatalog[] = {
    // --- group 129: statement parser ---
    {129, 1, Error, "{1}: the quoted string that starts here is not terminated.\n{2}"},
    {129, 2, Error, "{1}: the comment that starts here is not terminated.\n{2}"},
    {129, 3, Error, "{1}: the character {2} is not valid here.\n{3}"},
    {129, 4, Error, "{1}: {2} is not a valid date, time or datetime constant. Write '01JAN2020'd, '13:30't or '01JAN2020:13:30:00'dt.\n{3}"},
    {129, 5, Error, "{1}: {2} is not a valid number.\n{3}"},
    {129, 6, Error, "{1}: the name {2} is empty or longer than 32 characters.\n{3}"},
    {129, 10, Error, "{1}: the program holds no statements."},
    {129, 11, Error, "{1}: {2} is not a statement of this procedure (QVT, ID, FORECAST, IDM, BY); the statement is ignored.\n{3}"},
    {129, 12, Error, "{1}: the statement {2} stands before the first QVT statement and is ignored.\n{3}"},
    {129, 20, Error, "{1}: syntax error: found {2}, expected {3}.\n{4}"},
    {129, 21, Note, "{1}: the statement was repaired by {2}, so that the rest of it can be checked."},
    {129, 22, Error, "{1}: the {2} statement can't be repaired and is ignored."},
    {129, 23, Error, "{1}: {2} is not known here; it was read as {3}. Correct the spelling.\n{4}"},
    {129, 30, Error, "{1}: the value {2} of {3} is out of range: it must lie between {4} and {5}.\n{6}"},
    {129, 31, Error, "{1}: the value {2} of {3} is out of range: it must be at least {4}.\n{5}"},
    {129, 32, Warning, "{1}: {2} is given more than once; the last value is used.\n{3}"},
    {129, 33, Warning, "{1}: a second {2} statement; its options are added to those of the first.\n{3}"},
    {129, 34, Error, "{1}: {2} is not a valid interval (result {3}). Write a name such as MONTH, WEEK.2 or DTHOUR6; a calendar of your own is named by --option INTERVALDS=NAME=LIB.MEMBER.\n{4}"},
    {129, 40, Error, "{1}: the variable {2} is not in the input data set."},
    {129, 41, Error, "{1}: {2} and {3} don't form a numbered range: both need the same prefix followed by a number."},
    {129, 42, Error, "{1}: the range {2} is empty: {3} comes after {4}."},
    {129, 43, Error, "{1}: the variable {2} is character; a numeric variable is needed here. A CSV column is numeric when each of its cells is a number, a missing value (empty or .), or an ISO date, datetime or time such as 2024-03-31; a SQLite column when it is not declared TEXT (declare a column of ISO dates or datetimes DATE or DATETIME)."},
    {129, 44, Error, "{1}: no variable begins with {2}."},
    {129, 45, Warning, "{1}: the list element {2} names no variable of the type needed here."},
    // --- group 743: procedure ---
    // --- group 773: LEAD= limit ---
    // --- group 881: run information, intermittent models ---
    // --- group 882: time ID positioning ---
    // --- group 900: host layer ---
    {900, 1, Error, "Internal error of the host layer: {1}. Please report it with the program and data that caused it."},
    {900, 7, Error, "The data set {1} is the folder {2}, not a file. Name a CSV file, or a member of a library assigned with --lib."},
    {900, 8, Error, "The host option {1} is not known. The host options are DEBUG and INTERVALDS."},
    {900, 9, Error, "The path {1} of the library {2} is a file, not a folder. Give a folder of CSV files, or {2}=sqlite:{1} if it is a SQLite database."},
    {900, 10, Error, "The data set name {1} is not valid. Write member, lib.member or a quoted file path."},
    {900, 11, Error, "The library {1} of the data set {2} is not assigned. Assign it with --lib {1}=DIR."},
    {900, 12, Error, "The data set {1} does not exist: there is no file {2}. Check the name and the --lib folder."},
    {900, 13, Error, "The library {1} is assigned twice (--lib {2} and --lib {3}). Give each library one --lib."},
    {900, 14, Error, "The library {1} is of kind {2}, which qvt does not know. Assign a folder of CSV files (NAME=DIR) or a SQLite database (NAME=sqlite:FILE)."},
    {900, 15, Error, "The library assignment {1} is not valid. Write NAME=DIR or NAME=sqlite:FILE, with a name of letters, digits and underscores."},
    {900, 16, Error, "The file {1} cannot be opened for reading: {2}."},
    {900, 17, Error, "The output data set {1} cannot be created in the folder {2}: {3}. Check that the folder exists and is writable."},
    {900, 18, Error, "The output data set {1} could not be moved into place as {2}: {3}. An earlier file of that name is unchanged."},
    {900, 19, Warning, "The side file {1} is not usable ({2}); its labels, formats and types are ignored and the columns' types are inferred."},
    {900, 20, Note, "The output data set {1} was not written because the step ended with return code {2}; an earlier file of that name is unchanged."},
    {900, 21, Note, "The data set {1} has {2} records and {3} variables."},
    {900, 22, Error, "The log file {1} cannot be opened for writing: {2}."},
    {900, 23, Error, "The folder {1} of the library {2} does not exist. Create it or correct --lib."},
    {900, 24, Error, "The host option {1} is not valid. Write --option NAME=VALUE."},
    {900, 30, Error, "The file {1} is empty. A CSV data set needs a header line with the names of the variables."},
    {900, 31, Error, "{1}, line 1, column {2}: the variable name is empty. Give every column of the header a name."},
    {900, 32, Error, "{1}, line 1, column {2}: the variable name {4} was already used by column {3} (names ignore case). Rename one of them."},
    {900, 33, Error, "{1}, line 1, column {2}: the variable name {3} is longer than 32 bytes. Shorten it."},
    {900, 34, Error, "{1}, line {2}, column {3}: the bytes are not valid UTF-8. Save the file in the UTF-8 encoding."},
    {900, 35, Error, "{1}, line {2}: the record has {3} fields but the header has {4}. Give every line one field per column, and quote fields that contain commas."},
    {900, 36, Error, "{1}, line {2}: a quoted field is not closed before the end of the file. Add the closing double quote."},
    {900, 37, Error, "{1}, line {2}, column {3}: a character follows the closing quote of a field. Write a quote inside a quoted field as two quotes."},
    {900, 38, Note, "The file {1} has a header but no records."},
    {900, 39, Error, "{1}, line {2}, column {3}: the cell {4} is not a {5} value, which the side file {6} gives this column. Correct the cell or the side file."},
    {900, 40, Error, "Reading the file {1} failed: {2}."},
    {900, 41, Error, "The data set {1} could not be written: writing the file {2} failed: {3}. An earlier file of that name is unchanged; check the free space of its folder."},
    {900, 42, Note, "{1}, line {2}: the variable {3} is read as character, because the cell {4} is not a {5} value like the cells above it. Correct the cell if the column should hold {5} values."},
    {900, 43, Warning, "The data set {1} was written, but its side file {2} could not be put in place ({3}); its labels and formats are lost, and its types are inferred when it is read."},
    {900, 44, Warning, "The data set {1} was written, but its side file {2} could not be replaced ({3}) and still describes the earlier data. Remove {2} before the data set is read again."},
    {900, 45, Note, "{1}: {2} blank lines were skipped, the first at line {3}; a blank line is no record. A record whose only cell is empty is written \"\"."},
    {900, 46, Note, "{1}, line {2}: the variable {3} is read as character, because the cell {4} has the form of a date but names no day of the calendar: a day that does not exist, or one before 1582-01-01 or after 20000-12-26. Correct the cell if the column should hold dates."},
    {900, 47, Note, "{1}, line {2}: the variable {3} is read as character, because the cell {4} is a date followed by a time of day that can't be read: write hh:mm, hh:mm:ss or hh:mm:ss.fff after T or a blank, with hours from 00 to 23 and no time zone. Correct the cell if the column should hold datetimes."},
    {900, 50, Error, "The data set {1} is not in {2} order of the BY variable {3}: record {4} ({5}) follows record {6} ({7}). Sort the data set, mark the variable DESCENDING, or add NOTSORTED to the BY statement."},
    {900, 51, Error, "There is no variable number {1} in the data set {2}."},
    {900, 52, Error, "The variable {1} is defined twice in the output data set {2}."},
    {900, 53, Error, "The output data set {1} can't take a new variable after its definitions ended."},
    {900, 54, Error, "The variable {1} of the data set {2} is {3}; it can't be bound to a cell of the other type."},
    {900, 55, Error, "The data set {1} is not open for {2}."},
    {900, 56, Error, "The data set {1} is named by two outputs of this step; give each output a name of its own."},
    {900, 60, Warning, "The host option INTERVALDS={1} holds a pair that can't be read; the pairs after it are ignored. Write NAME=MEMBER or NAME=LIB.MEMBER, pairs separated by blanks or commas."},
    {900, 61, Error, "The calendar data set {1} of the custom interval {2} has no numeric variable BEGIN. Give it a variable BEGIN with the first date of each interval."},
    {900, 62, Error, "The calendar data set {1} of the custom interval {2} has no records. Give it one record for each interval."},
    {900, 63, Error, "The variable {2} of the calendar data set {1} is character; END and SEASON must be numeric."},
    {900, 70, Error, "Out of memory: {1} bytes could not be allocated within the memory budget of {2} bytes. Raise --memsize, or use less data per step (with BY groups, per group)."},
    {900, 80, Error, "A temporary spool file could not be created in {1}: {2}. Set TMPDIR to a writable folder with free space."},
    {900, 81, Error, "Writing a temporary spool file failed: {1}. Check the free space of the TMPDIR folder."},
    {900, 82, Error, "Reading a temporary spool file failed: {1}."},
    {900, 83, Error, "Positioning a temporary spool file failed: {1}."},
    {900, 84, Error, "Closing a temporary spool file failed: {1}."},
    {900, 90, Error, "A host operation failed with result code {1}."},
    {900, 100, Error, "The database {1} cannot be opened: {2}. Check that the file is a SQLite database that can be read."},
    {900, 101, Error, "The folder {1} of the database {2} of the library {3} does not exist. Create it or correct --lib."},
    {900, 102, Error, "The data set {1} does not exist: there is no database file {2}. Check the path given with --lib."},
    {900, 103, Error, "The data set {1} does not exist: the database {2} has no table or view {3}. Check the member name."},
    {900, 104, Error, "The data set {1} cannot be read: the database {2} stayed locked by another connection for {3} ms. Run again when the other program has finished writing."},
    {900, 105, Error, "The output data set {1} was not written: the database {2} stayed locked by another connection for {3} ms. An earlier table of that name is unchanged; run again when the other program has finished."},
    {900, 106, Error, "Reading the data set {1} from the database {2} failed: {3}."},
    {900, 107, Error, "The output data set {1} could not be written to the database {2}: {3}. An earlier table of that name is unchanged."},
    {900, 108, Error, "In the data set {1}, column {2} is named '{3}', which can't name a variable: a name has 1 to 32 bytes and differs from the other columns' names without regard to case. Rename the column."},
    {900, 109, Error, "In the data set {1}, the column {2} mixes kinds of values: record {3} holds the {4} value '{5}' where record {7} holds a {6} value. Keep one kind per column: numbers as REAL, text as TEXT, dates as ISO text."},
    {900, 110, Error, "In the data set {1}, record {3} of the column {2} holds '{4}', which is not a {5} value as the column's declared type or its format in qvt_columns asks. Correct the cell, the type or the format."},
    {900, 111, Error, "In the data set {1}, record {3} of the column {2} holds a BLOB, which is neither a number nor a text. Store numbers as REAL and text as TEXT."},
    {900, 112, Error, "In the data set {1}, record {3} of the column {2} holds text that is not valid UTF-8. Store text in the UTF-8 encoding."},
    {900, 113, Warning, "The table qvt_columns of the database {1} is not usable ({2}); its labels and formats are ignored and the columns' types come from the table alone."},
    {900, 114, Note, "The data set {1} has no records."},
    {900, 115, Error, "The output data set {1} can't be written: the table name {2} is reserved in a SQLite library (qvt_columns holds the labels and formats, names starting with sqlite_ belong to SQLite). Choose another name."},
    {900, 116, Error, "The output data set {1} has no variables, and a SQLite table needs at least one column; it was not written."},
    {900, 119, Error, "Writing record {2} of the output data set {1} was made to fail by a test hook."},
    // --- group 901: the command line ---
    {901, 1, Error, "The program file {1} cannot be read: {2}."},
    {901, 3, Note, "The step at line {1} ended with return code {2}."},
};

}  // namespace

std::array<std::span<const CatalogEntry>, 7> catalogParts() noexcept {
  return {std::span<const CatalogEntry>(kCatalog), catalogRun(), catalogInput(), catalogStatements(),
          catalogOutput(), catalogReport(), catalogIntermittent()};
}

const CatalogEntry* catalogFind(int group, int number) noexcept {
  auto key = [](const CatalogEntry& e) { return std::pair{e.group, e.number}; };
  for (std::span<const CatalogEntry> part : catalogParts()) {
    auto it = std::lower_bound(part.begin(), part.end(), std::pair{group, number},
                               [&](const CatalogEntry& e, const std::pair<int, int>& k) { return key(e) < k; });
    if (it != part.end() && key(*it) == std::pair{group, number}) return &*it;
  }
  return nullptr;
}

std::string catalogFormat(const CatalogEntry& e, std::span<const MsgArg> args) {
  std::string out;
  const std::string_view t = e.text;
  for (std::size_t i = 0; i < t.size(); ++i) {
    if (t[i] == '{' && i + 2 < t.size() && t[i + 1] >= '1' && t[i + 1] <= '9' && t[i + 2] == '}') {
      const auto k = static_cast<std::size_t>(t[i + 1] - '1');
      if (k < args.size()) {
        std::visit(
            [&](const auto& v) {
              using T = std::decay_t<decltype(v)>;
              if constexpr (std::is_same_v<T, std::string>) {
                out += v;
              } else if constexpr (std::is_same_v<T, double>) {
                char buf[32];
                std::snprintf(buf, sizeof buf, "%.15g", v);
                out += buf;
              } else {
                out += std::to_string(v);
              }
            },
            args[k]);
      }
      i += 2;
    } else {
      out += t[i];
    }
  }
  return out;
}

}  // namespace qvt
