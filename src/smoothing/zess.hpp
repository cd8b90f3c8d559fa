// Kernel sets of seasonal exponential smoothing without trend: additive
// (zess: xhat = L + s, L' = w (x - s) + (1 - w) L, s' = d (x - L') + (1 - d) s)
// and multiplicative (zesi: xhat = L s, L' = w x/s + (1 - w) L,
// s' = d x/L' + (1 - d) s). They are the Winters recursions (zwin.hpp)
// with no trend. Conventions as zwin.hpp; the zesi routines take the
// additive flag, which this system always passes as 0.
#pragma once

namespace qvt {

int zesssvi(const double* x, const char* misflg, long n, int nseasons, int nstart, int stflg,
            double* level, double* sfactor) noexcept;
int zesisvi(const double* x, const char* misflg, long n, int nseasons, int nstart, int additive,
            int stflg, double* level, double* sfactor) noexcept;
int zesspnt(double x, double xscale, double wlevel, double wseason, double* level,
            double* sfactor, int scode, double* xhat, double* e) noexcept;
int zesipnt(double x, double xscale, int additive, double wlevel, double wseason, double* level,
            double* sfactor, int scode, double* xhat, double* e) noexcept;
// derlev, dersea, dervec: two entries (level, season weight).
int zessdpd(double x, double wlevel, double wseason, double llevel, double clevel,
            double lseason, double cseason, double* derlev, double* dersea,
            double* dervec) noexcept;
int zesidpd(double x, double wlevel, double wseason, double llevel, double clevel,
            double lseason, double cseason, int additive, double* derlev, double* dersea,
            double* dervec) noexcept;
int zesssmo(const double* x, const char* misflg, double xscale, long n, int nseasons,
            double wlevel, double wseason, double* level, double* sfactor, const int* scodes,
            double* mse) noexcept;
int zesismo(const double* x, const char* misflg, double xscale, long n, int nseasons,
            int additive, double wlevel, double wseason, double* level, double* sfactor,
            const int* scodes, double* mse) noexcept;
int zessnpd(const double* x, const char* misflg, double xscale, long n, int nseasons,
            double wlevel, double wseason, double level, const double* sfactor,
            const int* scodes, const double* deltas, int wkflag, double* pder) noexcept;
int zesinpd(const double* x, const char* misflg, double xscale, long n, int nseasons,
            int additive, double wlevel, double wseason, double level, const double* sfactor,
            const int* scodes, const double* deltas, int wkflag, double* pder) noexcept;
// Rows of 8 doubles, the factor of the row's season in column 7.
int zessprd(const double* x, const char* misflg, double xscale, long n, int nseasons,
            double wlevel, double wseason, double* level, double* sfactor, const int* scodes,
            long start, long end, long lead, double se2, double siglev, int startflg,
            double* mse, double* strptr) noexcept;
int zesiprd(const double* x, const char* misflg, double xscale, long n, int nseasons,
            int additive, double wlevel, double wseason, double* level, double* sfactor,
            const int* scodes, long start, long end, long lead, double se2, double siglev,
            int startflg, double* mse, double* strptr) noexcept;
void zessnmd(int nseasons, double* level, double* sfactor, double* derlev, double* dersealev,
             double* derseasea) noexcept;
void zesinmd(int nseasons, int additive, double* level, double* sfactor, double* derlev,
             double* dersealev, double* derseasea) noexcept;
int zessstb(int nseasons, double wlevel, double wseason) noexcept;
int zesistb(int nseasons, double wlevel, double wseason) noexcept;
// psi_j = w, plus (1 - w) d when j is a multiple of nseasons.
int zesspsi(double wlevel, double wseason, int nseasons, long npsi, double* psi) noexcept;
int zesipsi(double wlevel, double wseason, int nseasons, long npsi, double* psi) noexcept;
// Forecast variance in closed form: se2 (1 + (lead - 1) w^2), plus
// se2 ((lead - 1)/ns) c (2 w + c) with c = (1 - w) d beyond one cycle.
double zesscla(double wlevel, double wseason, int nseasons, double se2, long lead, double siglev,
               double* limit) noexcept;
double zesicla(double wlevel, double wseason, int nseasons, double se2, long lead, double siglev,
               double* limit) noexcept;
void zessstd(const double* xpxdiag, double mse, long nobs, const double* parms, double* stderr_,
             double* tvals) noexcept;
void zesistd(const double* xpxdiag, double mse, long nobs, const double* parms, double* stderr_,
             double* tvals) noexcept;

inline constexpr int kZessRowLen = 8;

}  // namespace qvt
