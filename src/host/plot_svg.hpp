// The renderers of plots: each plot name draws an SVG picture from its
// data table's columns and named values. The autocorrelations that the
// error plots show are computed here from the table's "Error" column, by
// the textbook estimators, so that the engine hands over data, not pictures.
#pragma once

#include <vector>

namespace qvt {

// The sample autocorrelations r_0..r_nlags of x: r_k = c_k / c_0 with
// c_k = (1/m) sum (x_t - mean)(x_{t+k} - mean) over the pairs with both
// values present, m the count of values present (Box and Jenkins, 1976).
// Empty when fewer than two values are present or c_0 is 0.
std::vector<double> plotAcf(const std::vector<double>& x, int nlags);
// The partial autocorrelations phi_kk, k = 1..nlags, from r by the
// Durbin-Levinson recursion; element 0 is 1.
std::vector<double> plotPacf(const std::vector<double>& r);
// The inverse autocorrelations, k = 0..nlags: those of the moving average
// dual of the autoregression of order nlags fitted by Yule-Walker
// (Cleveland, 1972): (-phi_k + sum_j phi_j phi_{j+k}) / (1 + sum_j phi_j^2).
std::vector<double> plotIacf(const std::vector<double>& r);

// The upper tail P(X > x) of the chi-square distribution with df degrees of
// freedom: the regularized incomplete gamma Q(df/2, x/2) by its series or
// its continued fraction (Press et al., Numerical Recipes, 6.2).
double plotChiSquareTail(double x, double df);
// The white-noise probabilities of the Ljung-Box statistics of r over m
// values (Ljung and Box, 1978): for each lag k = 1..nlags of r, P(chi2 with
// k - nparms degrees of freedom > Q_k), Q_k = m (m + 2) sum r_j^2 / (m - j);
// missing where k - nparms < 1. Element 0 is missing too.
std::vector<double> plotWhiteNoise(const std::vector<double>& r, long m, int nparms);

// The periodogram of the values of x that are present (missing values left
// out; n is their count), centred on their mean when `centre`:
// I(w_k) = (2/n) |sum_t x_t exp(-i w_k t)|^2 at the Fourier frequencies
// w_k = 2 pi k / n, k = 0..floor(n/2) (Brockwell and Davis, Time Series:
// Theory and Methods, ch. 10). Empty when fewer than two values are present.
std::vector<double> plotPeriodogram(const std::vector<double>& x, bool centre);
// The periodogram ordinates ord (k = 0..floor(n/2) of n values) averaged by
// the Bartlett (triangular) kernel of half-width m: W_j = (m + 1 - |j|) /
// (m + 1)^2 for |j| <= m, the ordinates beyond 0 and pi mirrored. With
// `centred` the ordinate at 0 (0 by construction) is replaced by that at
// w_1. edf, when given, takes each average's equivalent degrees of freedom.
// Empty when ord is not of that length or m is negative.
std::vector<double> plotBartlett(const std::vector<double>& ord, long n, int m, bool centred,
                                 std::vector<double>* edf);
// The p-quantile of the chi-square distribution with df degrees of freedom,
// by bisection on plotChiSquareTail; missing unless 0 < p < 1 and df > 0.
double plotChiSquareQuantile(double p, double df);

}  // namespace qvt
