// The records of statistics of fit and of the descriptive statistics of one
// series. Output writers map their fields to columns one by one, so the
// field order is part of the public form.
#pragma once

namespace qvt {

// Statistics of one fit. Counts are whole numbers; every statistic is the
// missing value when it is undefined.
struct SF_STATS {
  long dfe = 0;     // error degrees of freedom
  long n = 0;       // length of the trimmed range
  long nobs = 0;    // length before trimming
  long nmissa = 0;  // missing actuals
  long nmissp = 0;  // missing predictions
  int nparms = 0;
  double mean = 0, tss = 0, sst = 0, sse = 0, mse = 0, rmse = 0, umse = 0, urmse = 0;
  double rsquare = 0, adj_Rsq = 0, a_adj_Rsq = 0, rw_Rsq = 0;
  double aic = 0, aicc = 0, sbc = 0, apc = 0;
  double mae = 0, me = 0, maxerr = 0, minerr = 0, mase = 0;
  double gmape = 0, mdape = 0, mape = 0, mpe = 0, maxpe = 0, minpe = 0;
  double gmapes = 0, mdapes = 0, mapes = 0, maxapes = 0, minapes = 0;
  double gmaspe = 0, mdaspe = 0, smape = 0, mspe = 0, maxspe = 0, minspe = 0;
  double gmrae = 0, mdrae = 0, mrae = 0, mre = 0, maxre = 0, minre = 0;
  double gmappe = 0, mdappe = 0, mappe = 0, mppe = 0, maxppe = 0, minppe = 0;
  long lower = 0, upper = 0, total = 0;  // actuals outside the limits
  double pctlower = 0, pctupper = 0, pcttotal = 0;
};

// Description of one series.
struct SUMMSTATS {
  long nobs = 0, n = 0, nmiss = 0, mingap = 0, maxgap = 0;
  double min = 0, max = 0, mean = 0, std = 0, sum = 0;
};

}  // namespace qvt
