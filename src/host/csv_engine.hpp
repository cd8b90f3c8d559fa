// The CSV engine: a library is a folder, a member is the file MEMBER.csv in
// it, with the side file MEMBER.csv.meta.json for labels, formats and types.
//
// Reading makes two streaming passes and never holds the file: the first
// checks the header and every record (field counts, quoting, UTF-8) and
// infers each column's kind from all its cells; the second delivers the
// records. A column is numeric when every cell is missing or a value of one
// kind (number, date, datetime or time, see csv_cell.hpp), else character.
// Inferred dates get the format DATE9., datetimes DATETIME19., times TIME8.
// When the side file is present its types, formats and labels win over the
// inference: a column it calls character stays text even when its cells look
// like numbers ("007"), and a date column may hold plain numbers (dates with
// a fraction of a day, written as numbers because ISO 8601 has no form for them).
//
// Writing goes to a temporary file beside the target, renamed over it by
// commit; the side file is written the same way. Lines end with LF.
#pragma once

#include <memory>
#include <string>

#include "host/dsengine.hpp"

namespace qvt {

class CsvEngine final : public DsEngine {
 public:
  // The path of the side file of a CSV file.
  static std::string metaPath(const std::string& csvPath) { return csvPath + ".meta.json"; }

  DsLocation locate(const std::string& lib, const std::string& where,
                    const std::string& member) const override;
  bool exists(const DsLocation& loc) const override;
  // A folder where the file should be is named as such.
  DsDiag missing(const DsLocation& loc) const override;
  std::unique_ptr<DsReader> openRead(const DsLocation& loc, DsDiag& diag,
                                     std::vector<DsDiag>& notes) override;
  std::unique_ptr<DsWriter> openWrite(const DsLocation& loc, DsDiag& diag) override;

  // Read buffer size; tests make it tiny to cross buffer ends everywhere.
  std::size_t bufferBytes = std::size_t{1} << 20;

 private:
  unsigned serial_ = 0;  // names the temporary files of outputs
};

}  // namespace qvt
