// A plot's data table under construction: a table like the printed ones,
// hidden unless PRINT=INTERNAL, with the named values that describe its
// time axis, and the graphs drawn from it. Every host call follows the
// printed tables' failure rule: a host without an output layer makes the
// plots silent no-ops; any other failure ends the step with rc 2000.
#pragma once

#include <initializer_list>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "report/tables.hpp"

namespace qvt {

class PlotTable : public TableOut {
 public:
  // Opens table `name` under the template prefix + "." + templ.
  PlotTable(QVTCOM* com, std::string_view name, std::string_view templ, int title);
  QVTCOM* com() const noexcept { return com_; }

  using TableOut::col;
  // "Lower" and "Upper" with the confidence level in their labels.
  void confidenceCols(double alpha, int decimals);
  // "Actual", labelled by the series' label or else its name.
  void actualCol(int decimals);
  // The named values of the time axis, the series and the confidence level.
  void axisValues(double alpha);
  // Draws graph `name`: its label text, and its title text with the
  // series' name; values are the template's own.
  void graph(std::string_view name, int label, int title, std::vector<TableValue> values = {});
};

}  // namespace qvt
