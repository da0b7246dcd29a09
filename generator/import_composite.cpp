// Files of other programs as finished scans: drawings, point files, point-time files.
#include <algorithm>
#include <numeric>
#include <vector>

#include "ZRVDataGenerator.h"
#include "generator/content.h"
#include "generator/counts.h"
#include "generator/timed_points.h"

namespace {

using zrv::PointArrays;
using zrv::ScanAssembly;

// Loads the file, unless none is named, and says what it is; ImportByContent when it is nothing.
ZRVImportFormat Load(ZRVDataGenerator& generator, const ZRVImportSettings& file) {
  if (file.FileName == nullptr) return file.Format;
  const auto isWanted = [&](ZRVImportFormat format) {
    return file.Format == ImportByContent || file.Format == format;
  };
  if (isWanted(ImportIlda)) {
    generator.LoadIldaFile(file.FileName);
    if (generator.IldaNumFrames() > 0) return ImportIlda;
  }
  if (isWanted(ImportPointTimes) && generator.LoadPointTimeFile(file.FileName) > 0) return ImportPointTimes;
  if (isWanted(ImportPoints) && generator.LoadPointFile(file.FileName) > 0) return ImportPoints;
  return ImportByContent;
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
  points.Resize(generator.PointTimeFileDataStream(points.x.data(), points.y.data(), points.m.data(),
                                                  points.dwellTimes.data()));
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
      if (rgb != nullptr && !content->ilda.red.empty()) assembly.CarryColours();
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
