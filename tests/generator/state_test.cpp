#include <atomic>
#include <climits>
#include <cstdlib>
#include <new>

#include "ZRVDataGenerator.h"
#include "points.h"

namespace {
std::atomic<size_t> allocations{0};
std::atomic<size_t> largest{0};
}  // namespace

// Counts what the calls under test allocate.
void* operator new(size_t size) {
  ++allocations;
  if (size > largest) largest = size;
  if (void* memory = std::malloc(size)) return memory;
  throw std::bad_alloc();
}
void* operator new[](size_t size) { return operator new(size); }
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, size_t) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory, size_t) noexcept { std::free(memory); }

namespace {

using namespace zrv_test;

template <typename Call>
size_t AllocationsOf(Call call) {
  const size_t before = allocations;
  largest = 0;
  call();
  return allocations - before;
}

TEST(GeneratorState, ScratchGrowsInStepsAndNeverShrinks) {
  ZRVDataGenerator generator;
  const struct {
    unsigned int keypoints;
    size_t floats;  // newly allocated
  } kRows[] = {{0, 0}, {1, 10000}, {10000, 0}, {10001, 20000}, {500, 0}, {20001, 30000}};
  for (const auto& row : kRows) {
    const size_t count = AllocationsOf([&] { generator.AllocInterpData(row.keypoints, 7); });
    EXPECT_EQ(count, row.floats ? 1u : 0u) << row.keypoints;
    EXPECT_EQ(largest, row.floats * sizeof(float)) << row.keypoints;
  }
  generator.ClearInterpData();
  generator.ClearInterpData();
  EXPECT_EQ(AllocationsOf([&] { generator.AllocInterpData(500, 0); }), 1u) << "after clearing";
}

TEST(GeneratorHelpers, Gcd) {
  const int kRows[][3] = {{12, 18, 6},  {7, 0, 7},    {0, 5, 5},          {0, 0, 0},           {-4, 6, 2},
                          {4, -6, -2}, {-6, -4, -2}, {INT_MIN, -1, -1}, {INT_MIN, 0, INT_MIN}};
  for (const auto& row : kRows) EXPECT_EQ(ZRVDataGenerator::gcd(row[0], row[1]), row[2]) << row[0] << ", " << row[1];
}

TEST(GeneratorHelpers, SawIsATriangleWithTheSinesPhase) {
  const float kPi = 3.14159274f;
  const float kRows[][2] = {{0, 0},          {kPi / 2, 1},      {kPi, 0},     {1.5f * kPi, -1}, {2 * kPi, 0},
                            {2.5f * kPi, 1}, {kPi / 4, 0.5f},   {3 * kPi, 0}, {-kPi / 2, -1},
                            {-kPi, -2}};  // below -pi/2 it leaves -1..1
  for (const auto& row : kRows) EXPECT_EQ(ZRVDataGenerator::saw(row[0]), row[1]) << row[0];
  EXPECT_NEAR(ZRVDataGenerator::saw(1000.0f), std::asin(std::sin(1000.0)) * 2 / kPi, 1e-4);
  EXPECT_TRUE(std::isnan(ZRVDataGenerator::saw(NAN)));
}

}  // namespace
