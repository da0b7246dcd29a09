// Drawings and animations as keypoints.
#include <algorithm>
#include <cmath>

#include "ZRVDataGenerator.h"
#include "common/files.h"
#include "generator/content.h"
#include "generator/counts.h"
#include "generator/geometry.h"

namespace {

// Where in x and y a frame's coordinates end up.
struct View {
  zrv::Turn x, y;

  View(float angleX, float angleY) : x(Usable(angleX)), y(Usable(angleY)) {}

 private:
  // An angle that is no number would make keypoints of which none equals another: a frame that is closed
  // would not be seen to be, and closed again beyond the room for it.
  static float Usable(float angle) { return std::isfinite(angle) ? angle : 0.0f; }
};

using Keypoints = zrv::PointArrays;

// The sine of angleY goes with Y, so that at 0 the height is Z: one would expect Y. Kept on purpose; flat
// drawings are shown with angleY = pi / 2.
void CopyFrame(const zrv::IldaDrawing& from, zrv::IldaFrame frame, const View& view, const Keypoints& to,
               zrv::Bounds& bounds) {
  for (size_t i = 0; i < frame.size; ++i) {
    const size_t point = frame.first + i;
    const float x = from.x[point], y = from.y[point], z = from.z.empty() ? int16_t{0} : from.z[point];
    bounds.Add(x, y);  // as they are in the file, so that turning a drawing does not change its size
    to.x[i] = x * view.x.cosine + z * view.x.sine;
    to.y[i] = y * view.y.sine + z * view.y.cosine;
    to.m[i] = from.lit[point];
  }
}

void CopyColours(const zrv::IldaDrawing& from, zrv::IldaFrame frame, unsigned int* rgb) {
  if (from.red.empty()) std::fill_n(rgb, frame.size, 0u);
  for (size_t i = 0; i < frame.size && !from.red.empty(); ++i) {
    const size_t point = frame.first + i;
    rgb[i] = static_cast<unsigned int>(from.red[point] << 16 | from.green[point] << 8 | from.blue[point]);
  }
}

uint64_t PointsIn(const zrv::IldaDrawing& drawing, const unsigned int* frames, unsigned int count) {
  uint64_t points = 0;
  for (size_t i = 0; i < count; ++i) points += drawing.Frame(frames[i]).size;
  return points;
}

}  // namespace

void ZRVDataGenerator::LoadIldaFile(const char* fileName) {
  ClearIldaData();
  if (const auto file = zrv::ReadWholeFile(fileName)) content->ilda = zrv::DecodeIlda(*file);
}

void ZRVDataGenerator::ClearIldaData() {
  content->ilda = {};
  content->ildaKeypoints = {};
}

unsigned int ZRVDataGenerator::IldaFrameType() const { return content->ilda.frameType; }
unsigned int ZRVDataGenerator::IldaNumFrames() const { return content->ilda.frameCount; }
unsigned int ZRVDataGenerator::IldaNumMaxPoints() const { return content->ilda.largestFrame; }
unsigned int ZRVDataGenerator::IldaNumTotalPoints() const { return content->ilda.TotalPoints(); }

unsigned int ZRVDataGenerator::IldaFrameSize(unsigned int frame) const {
  return static_cast<unsigned int>(content->ilda.Frame(frame).size);
}

unsigned int ZRVDataGenerator::IldaAnimSize(const unsigned int* frames, unsigned int count) const {
  return frames == nullptr ? 0 : zrv::SaturatedCount(PointsIn(content->ilda, frames, count));
}

unsigned int ZRVDataGenerator::IldaKeypointCount(unsigned int request) const {
  return request < content->ildaKeypoints.size() ? content->ildaKeypoints[request] : 0;
}

unsigned int ZRVDataGenerator::IldaDataStream(float* x, float* y, unsigned char* m, unsigned int* rgb,
                                              const unsigned int* frames, unsigned int count, float xScale,
                                              float yScale, float angleX, float angleY, bool closeCurve) {
  const zrv::IldaDrawing& drawing = content->ilda;
  content->ildaKeypoints.clear();
  if (x == nullptr || y == nullptr || m == nullptr || frames == nullptr) return 0;
  if (!zrv::FitsCount(PointsIn(drawing, frames, count) + count)) return 0;

  content->ildaKeypoints.resize(count);
  const View view(angleX, angleY);
  zrv::Bounds bounds;
  unsigned int written = 0;
  for (unsigned int request = 0; request < count; ++request) {
    const zrv::IldaFrame frame = drawing.Frame(frames[request]);
    const Keypoints to = Keypoints{x, y, m, rgb}.From(written);
    CopyFrame(drawing, frame, view, to, bounds);
    if (rgb != nullptr) CopyColours(drawing, frame, to.rgb);

    auto size = static_cast<unsigned int>(frame.size);
    if (closeCurve) size = CloseCurve(to.x, to.y, to.m, to.rgb, size, 1, false);
    size = OptimizeKeypoints(to.x, to.y, to.m, to.rgb, size, 0);
    content->ildaKeypoints[request] = size;
    written += size;
  }
  return NormalizeData(x, y, written, xScale, yScale, bounds.minX, bounds.maxX, bounds.minY, bounds.maxY);
}

unsigned int ZRVDataGenerator::IldaDataStream(float* x, float* y, unsigned char* m, const unsigned int* frames,
                                              unsigned int count, float xScale, float yScale, float angleX,
                                              float angleY, bool closeCurve) {
  return IldaDataStream(x, y, m, nullptr, frames, count, xScale, yScale, angleX, angleY, closeCurve);
}
