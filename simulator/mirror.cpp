#include "simulator/mirror.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace zrv::sim {

namespace {

constexpr int kInput = 4;  // the input is carried as one more state that never changes
constexpr int kSize = 5;
using Matrix = std::array<std::array<double, kSize>, kSize>;

Matrix Product(const Matrix& a, const Matrix& b) {
  Matrix product{};
  for (int i = 0; i < kSize; ++i) {
    for (int k = 0; k < kSize; ++k) {
      for (int j = 0; j < kSize; ++j) product[i][j] += a[i][k] * b[k][j];
    }
  }
  return product;
}

Matrix Identity() {
  Matrix identity{};
  for (int i = 0; i < kSize; ++i) identity[i][i] = 1;
  return identity;
}

double LargestRowSum(const Matrix& m) {
  double largest = 0;
  for (const auto& row : m) {
    double sum = 0;
    for (const double value : row) sum += std::fabs(value);
    largest = std::max(largest, sum);
  }
  return largest;
}

Matrix Scaled(Matrix m, double factor) {
  for (auto& row : m) {
    for (double& value : row) value *= factor;
  }
  return m;
}

// exp(m) by scaling and squaring of the Taylor series. Source: Moler & Van Loan, Nineteen Dubious Ways to
// Compute the Exponential of a Matrix, SIAM Review 45 (2003), method 3.
Matrix Exponential(const Matrix& m) {
  const int halvings = std::max(0, 2 + std::ilogb(std::max(LargestRowSum(m), 1e-300)));
  const Matrix small = Scaled(m, std::ldexp(1.0, -halvings));
  Matrix sum = Identity(), term = Identity();
  for (int k = 1; k <= 16; ++k) {
    term = Scaled(Product(term, small), 1.0 / k);
    for (int i = 0; i < kSize; ++i) {
      for (int j = 0; j < kSize; ++j) sum[i][j] += term[i][j];
    }
  }
  for (int i = 0; i < halvings; ++i) sum = Product(sum, sum);
  return sum;
}

// Writes x'' + (w/q) x' + w^2 x = w^2 input at states at and at + 1. The speed is kept in units of w, so
// that all entries are of one size and the exponential stays exact.
void AddSecondOrder(Matrix& rates, int at, int input, double hertz, double q) {
  const double w = 2 * std::numbers::pi * hertz;
  rates[at][at + 1] = w;
  rates[at + 1][at] = -w;
  rates[at + 1][at + 1] = -w / q;
  rates[at + 1][input] = w;
}

// Beyond these the exact solution overflows or divides by zero.
double Sane(double value, double low, double high) {
  return value >= low ? std::min(value, high) : low;  // NaN too
}

}  // namespace

MirrorModel::MirrorModel(const MirrorOptions& options)
    : options_{Sane(options.resonanceHz, 1, 1e6), Sane(options.q, 0.1, 1e6)} {
  Configure({});
}

void MirrorModel::Configure(const MirrorTiming& timing) {
  constexpr double kButterworthQ = std::numbers::sqrt2 / 2;
  const bool filtered = timing.filterHz > 0;
  Matrix rates{};
  if (filtered) AddSecondOrder(rates, 0, kInput, Sane(timing.filterHz, 1, 1e6), kButterworthQ);
  AddSecondOrder(rates, 2, filtered ? 0 : kInput, options_.resonanceHz, options_.q);
  const Matrix step = Exponential(Scaled(rates, 1 / Sane(timing.sampleRate, 1, 1e9)));
  for (int i = 0; i < kStates; ++i) {
    std::copy_n(step[i].begin(), kStates, transition_[i].begin());
    drive_[i] = step[i][kInput];
  }
  if (filtered) return;
  transition_[0] = transition_[1] = {};  // the idle filter follows its input, so that it can take over smoothly
  drive_[0] = 1;
}

void MirrorModel::Reset() { x_ = y_ = Vector{}; }

void MirrorModel::StepAxis(Vector& state, double input) const {
  Vector next{};
  for (int i = 0; i < kStates; ++i) {
    next[i] = drive_[i] * input;
    for (int j = 0; j < kStates; ++j) next[i] += transition_[i][j] * state[j];
  }
  state = next;
}

void MirrorModel::Step(const MirrorPosition& target) {
  StepAxis(x_, target.x);
  StepAxis(y_, target.y);
}

MirrorPosition MirrorModel::position() const { return {static_cast<float>(x_[2]), static_cast<float>(y_[2])}; }

}  // namespace zrv::sim
