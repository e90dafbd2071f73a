#pragma once
// Student's t and Fisher's F: the tail probabilities and quantiles the calibration and rate
// statistics need, from the regularised incomplete beta function. Degrees of freedom may be any
// positive real number; anything else gives NaN.
namespace lumora {

// I_x(a, b), the regularised incomplete beta function, x in [0, 1].
double incomplete_beta(double a, double b, double x);

// P(T <= t) for Student's t with df degrees of freedom.
double student_t_cdf(double t, double df);
// The p quantile (0 < p < 1) of Student's t: t(0.975, 5) = 2.5706.
double student_t_quantile(double p, double df);

// P(F > f) for Fisher's F with (d1, d2) degrees of freedom: the p-value of a one-sided F test.
double f_upper_tail(double f, double d1, double d2);
// The p quantile of F(d1, d2): F(0.95; 2, 10) = 4.1028.
double f_quantile(double p, double d1, double d2);

} // namespace lumora
