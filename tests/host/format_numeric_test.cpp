// Numeric formats against values worked out by hand.
#include "host_test_util.hpp"

namespace qvt {
namespace {

struct Case {
  double value;
  const char* format;
  const char* expect;  // without the blanks on the left
};

// Checks the width, the right alignment and the text.
void expectRendered(const Case& c) {
  FormatSpec spec;
  ASSERT_EQ(parseFormatSpec(c.format, &spec), kFormatOk) << c.format;
  const int width = spec.width > 0 ? spec.width : findFormat(spec.name)->defaultWidth;
  std::string out;
  EXPECT_EQ(renderValue(c.value, spec, &out), 0) << c.format;
  ASSERT_EQ(static_cast<int>(out.size()), width) << c.format << " of " << c.value << ": [" << out << "]";
  const auto first = out.find_first_not_of(' ');
  const std::string shown = first == std::string::npos ? "" : out.substr(first);
  EXPECT_EQ(shown, c.expect) << c.format << " of " << c.value << ": [" << out << "]";
}

TEST(FormatNumeric, Best) {
  const Case cases[] = {
      {0.0, "BEST12.", "0"},
      {-0.0, "BEST12.", "0"},
      {1234.0, "BEST12.", "1234"},
      {-1234.0, "BEST12.", "-1234"},
      {3.14159, "BEST12.", "3.14159"},
      {0.1 + 0.2, "BEST12.", "0.3"},            // 15 significant digits hide the binary noise
      {1.0 / 3.0, "BEST12.", "0.3333333333"},
      {2.0 / 3.0, "BEST12.", "0.6666666667"},
      {-2.0 / 3.0, "BEST12.", "-0.666666667"},
      {123456789012.0, "BEST12.", "123456789012"},
      {1234567890123.0, "BEST12.", "1.2345679E12"},  // 13 digits: E with 8 significant
      {1e15, "BEST12.", "1E15"},
      {1e100, "BEST12.", "1E100"},
      {-1.5e-300, "BEST12.", "-1.5E-300"},
      {1e-10, "BEST12.", "1E-10"},              // tie in digits, below 1e-4: E
      {0.000012345, "BEST12.", "1.2345E-5"},
      {0.00012345, "BEST12.", "0.00012345"},    // tie, from 1e-4 on: decimal
      {123456.7, "BEST6.", "123457"},
      {0.123, "BEST4.", "0.12"},
      {0.5, "BEST2.", ".5"},                    // no decimal fits beside the zero
      {-0.25, "BEST3.", "-.3"},
      {-0.5, "BEST5.", "-0.5"},
      {2.5, "BEST1.", "3"},                     // half away from zero
      {1000.0, "BEST3.", "1E3"},
      {99999.5, "BEST5.", "1E5"},
      {12.0, "BEST1.", "*"},
      {2.675, "BEST4.", "2.68"},                // 2.675 is 2.67499999... in binary
  };
  for (const auto& c : cases) expectRendered(c);
}

TEST(FormatNumeric, FixedAndPlainWidth) {
  const Case cases[] = {
      {3.14159, "F8.2", "3.14"},
      {3.14159, "8.2", "3.14"},
      {-1234.567, "F8.2", "-1234.57"},
      {1234.567, "F6.2", "1234.6"},        // one decimal less
      {1234.567, "F4.2", "1235"},          // no decimals
      {1234.567, "F3.2", "***"},           // not even E fits
      {1234567.0, "F6.", "1E+06"},         // E before stars
      {0.12345, "F5.3", "0.123"},
      {0.12345, "F4.3", ".123"},           // the leading zero goes before a decimal does
      {0.0001, "F4.3", "0.00"},
      {0.25, "F3.1", "0.3"},               // exact binary half: away from zero
      {1.005, "F4.2", "1.01"},             // 1.00499999... in binary, typed as 1.005
      {0.5, "F1.0", "1"},
      {-0.5, "F2.0", "-1"},
      {-2.5, "F2.0", "-3"},
      {1.5, "F3.", "2"},
      {-0.004, "F5.2", "0.00"},            // no minus sign on a shown zero
      {1e300, "F12.2", "1E+300"},
      {-7.0, "F4.", "-7"},
  };
  for (const auto& c : cases) expectRendered(c);
}

TEST(FormatNumeric, CommaPercentPvalue) {
  const Case cases[] = {
      {1234567.891, "COMMA12.2", "1,234,567.89"},
      {1234567.891, "COMMA10.2", "1,234,568"},
      {-1234.0, "COMMA6.", "-1,234"},
      {999.5, "COMMA6.", "1,000"},
      {123.0, "COMMA6.", "123"},
      {1234.0, "COMMA4.", "****"},
      {0.123, "PERCENT8.1", "12.3%"},
      {-0.05, "PERCENT8.1", "(5.0%)"},
      {0.155, "PERCENT6.", "16%"},         // 15.5 exactly in decimal, half away
      {0.1255, "PERCENT8.2", "12.55%"},    // x100 done in decimal, no binary drift
      {0.00049, "PERCENT8.1", "0.0%"},
      {-0.0004, "PERCENT8.1", "0.0%"},     // a shown zero has no parentheses
      {12.34, "PERCENT4.", "****"},
      {1.0, "PERCENT6.", "100%"},
      {0.00001, "PVALUE6.4", "<.0001"},
      {0.00009999, "PVALUE6.4", "<.0001"},
      {0.0001, "PVALUE6.4", "0.0001"},
      {0.0123, "PVALUE6.4", "0.0123"},
      {0.5, "PVALUE6.4", "0.5000"},
      {1.0, "PVALUE6.4", "1.0000"},
      {0.00001, "PVALUE6.", "<.0001"},     // default decimals: min(4, w-2)
      {0.0004, "PVALUE5.3", "<.001"},
      {0.003, "PVALUE4.", "<.01"},
      {0.0, "PVALUE6.4", "0.0000"},
  };
  for (const auto& c : cases) expectRendered(c);
}

TEST(FormatNumeric, ENotation) {
  const Case cases[] = {
      {12345.0, "E10.", "1.235E+04"},
      {-12345.0, "E10.", "-1.235E+04"},
      {0.0, "E10.", "0.000E+00"},
      {1e100, "E10.", "1.00E+100"},
      {5.0, "E7.", "5E+00"},
      {12345.0, "E10.2", "1.23E+04"},
      {9.99, "E6.", "1E+01"},
      {0.000123, "E10.", "1.230E-04"},
      {12345.0, "E5.", "*****"},
  };
  for (const auto& c : cases) expectRendered(c);
}

TEST(FormatNumeric, MissingAndNonFinite) {
  const Case cases[] = {
      {kMissing, "BEST12.", "."},
      {skMissVal('A'), "F8.2", "A"},
      {skMissVal('Z'), "COMMA10.", "Z"},
      {skMissVal('_'), "PERCENT8.", "_"},
      {kMissing, "E10.", "."},
      {std::numeric_limits<double>::quiet_NaN(), "BEST12.", "."},
      {std::numeric_limits<double>::infinity(), "BEST12.", "************"},
      {-std::numeric_limits<double>::infinity(), "F8.2", "********"},
  };
  for (const auto& c : cases) expectRendered(c);
}

// A number never comes out wider than its width, whatever the value.
TEST(FormatNumeric, WidthIsAlwaysKept) {
  const double values[] = {0.0, 1.0, -1.0, 0.5, -0.5, 9.999, 99.95, 1e-300, -1e300, 123456789.123,
                           1.0 / 7.0, -999999.5, 5e-5, 4.9e-324};
  const char* formats[] = {"BEST", "F", "COMMA", "PERCENT", "PVALUE", "E"};
  for (const char* f : formats)
    for (int w = 1; w <= 14; ++w)
      for (int d : {-1, 0, 2, 5})
        for (double v : values) {
          const std::string out = renderFormat(v, f, w, d);
          EXPECT_EQ(static_cast<int>(out.size()), w) << f << w << "." << d << " of " << v;
        }
}

}  // namespace
}  // namespace qvt
