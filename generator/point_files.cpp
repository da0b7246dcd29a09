// Samples from and to text files, and the reader of named numbers.
#include <algorithm>
#include <string>

#include "ZRVDataGenerator.h"
#include "common/files.h"
#include "common/text_numbers.h"
#include "generator/content.h"

namespace {

void Reserve(zrv::PointFile& file, unsigned int& heldSize, unsigned int numPoints, zrv::PointColumns columns) {
  if (numPoints <= file.x.capacity()) return;
  file = {};
  heldSize = 0;
  file.x.reserve(numPoints);
  file.y.reserve(numPoints);
  file.m.reserve(numPoints);
  if (columns == zrv::PointColumns::xymt) file.t.reserve(numPoints);
}

unsigned int Load(const char* fileName, zrv::PointColumns columns, zrv::PointFile& into, unsigned int& heldSize) {
  const auto bytes = zrv::ReadWholeFile(fileName);
  into.Read(bytes ? zrv::AsText(*bytes) : std::string_view(), columns);
  heldSize = into.Size();
  return heldSize;
}

// Point files and point-time files share one counter, so a host may have sized its arrays by either of them.
unsigned int Held(const zrv::PointFile& file, unsigned int heldSize) { return std::min(file.Size(), heldSize); }

}  // namespace

unsigned int ZRVDataGenerator::LoadPointFile(const char* fileName) {
  return Load(fileName, zrv::PointColumns::xym, content->pointFile, content->pointFileSize);
}

unsigned int ZRVDataGenerator::LoadPointTimeFile(const char* fileName) {
  return Load(fileName, zrv::PointColumns::xymt, content->pointTimeFile, content->pointFileSize);
}

void ZRVDataGenerator::ClearPointFileData() {
  content->pointFile = {};
  content->pointFileSize = 0;
}

void ZRVDataGenerator::ClearPointTimeFileData() {
  content->pointTimeFile = {};
  content->pointFileSize = 0;
}

void ZRVDataGenerator::AllocPointFileData(unsigned int numPoints) {
  Reserve(content->pointFile, content->pointFileSize, numPoints, zrv::PointColumns::xym);
}

void ZRVDataGenerator::AllocPointTimeFileData(unsigned int numPoints) {
  Reserve(content->pointTimeFile, content->pointFileSize, numPoints, zrv::PointColumns::xymt);
}

unsigned int ZRVDataGenerator::GetPointFileSize() const { return content->pointFileSize; }
unsigned int ZRVDataGenerator::GetPointTimeFileSize() const { return content->pointFileSize; }
unsigned int ZRVDataGenerator::GetPointFileSps() const { return content->pointFile.sps; }
unsigned int ZRVDataGenerator::GetPointTimeFileSps() const { return content->pointTimeFile.sps; }

unsigned int ZRVDataGenerator::PointFileDataStream(float* x, float* y, unsigned char* m) const {
  if (x == nullptr || y == nullptr || m == nullptr) return 0;
  const zrv::PointFile& file = content->pointFile;
  const unsigned int count = Held(file, content->pointFileSize);
  std::copy_n(file.x.begin(), count, x);
  std::copy_n(file.y.begin(), count, y);
  std::copy_n(file.m.begin(), count, m);
  return count;
}

unsigned int ZRVDataGenerator::PointTimeFileDataStream(float* x, float* y, unsigned char* m, float* t) const {
  if (x == nullptr || y == nullptr || m == nullptr || t == nullptr) return 0;
  const zrv::PointFile& file = content->pointTimeFile;
  const unsigned int count = Held(file, content->pointFileSize);
  std::copy_n(file.x.begin(), count, x);
  std::copy_n(file.y.begin(), count, y);
  std::copy_n(file.m.begin(), count, m);
  std::copy_n(file.t.begin(), count, t);
  return count;
}

void ZRVDataGenerator::ExportFile(const char* fileName, const float* x, const float* y, const unsigned char* m,
                                  unsigned int count, unsigned int sps) {
  if (count > 0 && (x == nullptr || y == nullptr || m == nullptr)) return;
  std::string text;
  if (sps != 0) {
    text += "sps ";
    zrv::AppendUnsigned(text, sps);
    text += '\n';
  }
  for (size_t i = 0; i < count; ++i) {
    zrv::AppendFloat(text, x[i]);
    text += ' ';
    zrv::AppendFloat(text, y[i]);
    text += ' ';
    zrv::AppendUnsigned(text, m[i]);
    text += '\n';
  }
  zrv::WriteWholeFile(fileName, zrv::AsBytes(text));
}

float ZRVDataGenerator::ReadFileParameter(const char* fileName, const char* key, float defaultValue) {
  const auto bytes = key == nullptr ? std::nullopt : zrv::ReadWholeFile(fileName);
  return bytes ? zrv::ReadParameter(zrv::AsText(*bytes), key, defaultValue) : defaultValue;
}
