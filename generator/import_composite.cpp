// Files of other programs as finished scans: drawings, point files, point-time files.
#include <algorithm>
#include <numeric>
#include <vector>

#include "ZRVDataGenerator.h"
#include "common/files.h"
#include "generator/content.h"
#include "generator/counts.h"
#include "generator/timed_points.h"

namespace {

using zrv::PointArrays;
using zrv::ScanAssembly;

// What the file holds, without touching what is loaded.
ZRVImportFormat KindOf(const char* fileName) {
  const auto bytes = zrv::ReadWholeFile(fileName);
  if (!bytes) return ImportByContent;
  if (zrv::DecodeIlda(*bytes).frameCount > 0) return ImportIlda;
  zrv::PointFile points;
  points.Read(zrv::AsText(*bytes), zrv::PointColumns::xymt);
  if (points.Size() > 0) return ImportPointTimes;
  points.Read(zrv::AsText(*bytes), zrv::PointColumns::xym);
  return points.Size() > 0 ? ImportPoints : ImportByContent;
}

// Loads the file, unless none is named, and says what it is; ImportByContent when it is nothing of what is wanted.
ZRVImportFormat Load(ZRVDataGenerator& generator, const ZRVImportSettings& file) {
  if (file.FileName == nullptr) return file.Format;
  switch (file.Format == ImportByContent ? KindOf(file.FileName) : file.Format) {
    case ImportIlda:
      generator.LoadIldaFile(file.FileName);
      return generator.IldaNumFrames() > 0 ? ImportIlda : ImportByContent;
    case ImportPointTimes: return generator.LoadPointTimeFile(file.FileName) > 0 ? ImportPointTimes : ImportByContent;
    case ImportPoints: return generator.LoadPointFile(file.FileName) > 0 ? ImportPoints : ImportByContent;
    default: return ImportByContent;
  }
}

std::vector<unsigned int> FramesOf(const ZRVDataGenerator& generator, const ZRVImportSettings& file) {
  std::vector<unsigned int> frames;
  if (file.Frames != nullptr) {
    frames.assign(file.Frames, file.Frames + std::min<size_t>(file.NumFrames, zrv::kMostScanSamples));
  } else {
    frames.resize(generator.IldaNumFrames());
    std::iota(frames.begin(), frames.end(), 1u);
  }
  return frames;
}

void AddDrawing(ScanAssembly& assembly, ZRVDataGenerator& generator, const ZRVScanSettings& scan,
                const ZRVImportSettings& file) {
  const std::vector<unsigned int> frames = FramesOf(generator, file);
  const auto count = static_cast<unsigned int>(frames.size());
  const auto fill = [&](const PointArrays& to) {
    generator.IldaDataStream(to.x, to.y, to.m, to.rgb, frames.data(), count, file.Amplitude, 0.0f, file.AngleX,
                             file.AngleY, scan.Closing == ClosingBlank);
  };
  assembly.AddKeypointFrames(size_t{generator.IldaAnimSize(frames.data(), count)} + count, count, fill,
                             [&](unsigned int request) { return generator.IldaKeypointCount(request); });
}

// Samples come with their rate, if the file has one; corners are played at the scan's.
void AddPoints(ScanAssembly& assembly, const ZRVDataGenerator& generator, bool asKeypoints, unsigned int& rate) {
  const auto fill = [&](const PointArrays& to) { return generator.PointFileDataStream(to.x, to.y, to.m); };
  if (asKeypoints) {
    assembly.AddKeypoints(generator.GetPointFileSize(), fill);
  } else {
    assembly.AddSamples(generator.GetPointFileSize(), fill);
    if (generator.GetPointFileSps() != 0) rate = generator.GetPointFileSps();
  }
}

zrv::TimedPoints LoadedPointTimes(const ZRVDataGenerator& generator, float transitionTime) {
  zrv::TimedPoints points;
  points.Resize(generator.GetPointTimeFileSize());
  points.Resize(
      generator.PointTimeFileDataStream(points.x.data(), points.y.data(), points.m.data(), points.dwellTimes.data()));
  points.transitionTime = transitionTime;
  return points;
}

}  // namespace

void ZRVDataGenerator::GenerateImportFileData(float* x, float* y, unsigned char* m, unsigned int* rgb,
                                              const ZRVScanSettings& scan, const ZRVImportSettings& file,
                                              unsigned int& numSamples, unsigned int& numFrames,
                                              unsigned int& sampleRate) {
  ScanAssembly assembly(*this, scan, content->scratch);
  unsigned int rate = scan.SampleRate;
  switch (Load(*this, file)) {
    case ImportIlda:
      // Also when no colours are asked for: a corner where only the colour changes is a corner all the same.
      if (!content->ilda.red.empty()) assembly.CarryColours();
      AddDrawing(assembly, *this, scan, file);
      break;
    case ImportPoints: AddPoints(assembly, *this, file.Keypoints, rate); break;
    case ImportPointTimes:
      rate = GetPointTimeFileSps();
      AddTimedPoints(assembly, *this, scan, LoadedPointTimes(*this, file.TransitionTime), rate);
      break;
    case ImportByContent: break;
  }
  assembly.Deliver({x, y, m}, rgb, numSamples, numFrames);
  sampleRate = numSamples > 0 ? rate : 0;
}
