#include <climits>
#include <cstdlib>
#include <new>

#include "points.h"

namespace {
size_t largest = 0;  // bytes allocated at once
}

void* operator new(size_t size) {
  largest = std::max(largest, size);
  if (void* memory = std::malloc(size)) return memory;
  throw std::bad_alloc();
}
void* operator new[](size_t size) { return operator new(size); }  // the sanitizers have one that does not do that
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, size_t) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory, size_t) noexcept { std::free(memory); }

namespace {

using namespace zrv_test;

TEST(GeneratorState, ScratchGrowsInStepsAndNeverShrinks) {
  Generator generator;
  for (const auto& [keypoints, floats] : {std::pair{0u, 0u}, {1, 10000}, {10000, 0}, {10001, 20000}, {500, 0}}) {
    largest = 0;
    generator.AllocInterpData(keypoints, 7);
    EXPECT_EQ(largest, floats * sizeof(float)) << keypoints;
  }
  generator.ClearInterpData();
  generator.AllocInterpData(500, 0);
  EXPECT_EQ(largest, 10000 * sizeof(float)) << "after clearing";
}

TEST(GeneratorHelpers, GcdKeepsTheSignsOfEuclidsRule) {
  const int kRows[][3] = {{12, 18, 6},  {7, 0, 7},   {0, 0, 0},         {-4, 6, 2},
                          {-6, -4, -2}, {4, -6, -2}, {INT_MIN, -1, -1}, {INT_MIN, 0, INT_MIN}};
  for (const auto& row : kRows) EXPECT_EQ(Generator::gcd(row[0], row[1]), row[2]) << row[0] << ", " << row[1];
}

TEST(GeneratorHelpers, SawIsATriangleWithTheSinesPhase) {
  const double kRows[][2] = {{0, 0}, {0.25, 0.5}, {0.5, 1},   {1, 0},  {1.5, -1},
                             {2, 0}, {2.5, 1},    {-0.5, -1}, {-1, -2}};  // below -pi/2 it leaves -1..1
  for (const auto& row : kRows) EXPECT_EQ(Generator::saw(static_cast<float>(row[0]) * kPi), row[1]) << row[0];
  EXPECT_NEAR(Generator::saw(1000.0f), std::asin(std::sin(1000.0)) * 2 / kPi, 1e-4);
  EXPECT_TRUE(std::isnan(Generator::saw(NAN)));
}

}  // namespace
