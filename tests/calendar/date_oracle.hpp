// Reads tests/calendar/date_oracle.csv, the table of dates that
// gen_date_oracle.py computes with Python's datetime module.
#pragma once

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace qvt::testing {

struct OracleRow {
  double day;      // days from 1960-01-01
  int y, m, d;     // Gregorian date
  int wday;        // 1 Sunday .. 7 Saturday
  int yday;        // day of the year from 0
  int isoy, isow, isod;  // ISO 8601 week date, isod 1 Monday .. 7 Sunday
  int wu, ww;      // strftime %U and %W
  int k;           // a month count
  double mstart;   // first day of the month k months on
  double msame;    // same day of the month k months on, clipped to its end
};

inline std::vector<OracleRow> loadDateOracle() {
  std::vector<OracleRow> rows;
  std::ifstream in(std::string(QVT_SOURCE_DIR) + "/tests/calendar/date_oracle.csv");
  std::string line;
  std::getline(in, line);  // header
  while (std::getline(in, line)) {
    for (char& c : line)
      if (c == ',') c = ' ';
    std::istringstream s(line);
    OracleRow r{};
    s >> r.day >> r.y >> r.m >> r.d >> r.wday >> r.yday >> r.isoy >> r.isow >> r.isod >> r.wu >>
        r.ww >> r.k >> r.mstart >> r.msame;
    if (s) rows.push_back(r);
  }
  return rows;
}

}  // namespace qvt::testing
