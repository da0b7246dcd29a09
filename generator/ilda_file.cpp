#include "generator/ilda_file.h"

#include <algorithm>

#include "common/bytes.h"

namespace zrv {
namespace {

constexpr uint32_t kMagic = 0x494C4441;  // "ILDA"
constexpr size_t kColourBytes = 3;       // a palette record

enum Format : unsigned {
  k3dIndexed = 0,
  k2dIndexed = 1,
  kPalette = 2,
  k2dTrueColour = 5
};

struct SectionHeader {
  unsigned format = 0, records = 0, frames = 0;
};

// 32 bytes: magic, 3 reserved, format (2 bytes with the last reserved one), two names, record count,
// frame number, total frames, scanner, reserved. Only the magic of the whole file is looked at.
bool ReadHeader(BigEndianReader& in, SectionHeader& header) {
  BigEndianReader bytes(in.Bytes(32));
  bytes.Skip(6);
  header.format = bytes.U16();
  bytes.Skip(16);
  header.records = bytes.U16();
  bytes.Skip(2);
  header.frames = bytes.U16();
  return in.ok();
}

// Formats 0 and 5 have 8-byte records, all others are taken as 6. So format 4 (10 bytes in truth) is cut
// up wrongly; its points are not decoded anyway, and the counts that follow from it are kept.
size_t RecordBytes(unsigned format) { return format == k3dIndexed || format == k2dTrueColour ? 8 : 6; }

uint8_t LitFrom(uint8_t status) { return (status & 0x40) != 0 ? 0 : 255; }

int16_t Word(const uint8_t* bytes) { return static_cast<int16_t>(bytes[0] << 8 | bytes[1]); }

// The decoders write through plain pointers: a stored byte could be taken to change the arrays' own.
void Decode3dIndexed(std::span<const uint8_t> records, IldaDrawing& to, size_t first) {
  const size_t count = records.size() / 8;
  int16_t *x = &to.x[first], *y = &to.y[first], *z = &to.z[first];
  uint8_t* lit = &to.lit[first];
  for (size_t i = 0; i < count; ++i) {
    const uint8_t* record = &records[i * 8];
    x[i] = Word(record);
    y[i] = Word(record + 2);
    z[i] = Word(record + 4);
    lit[i] = LitFrom(record[6]);
  }
}

void Decode2dIndexed(std::span<const uint8_t> records, IldaDrawing& to, size_t first) {
  const size_t count = records.size() / 6;
  int16_t *x = &to.x[first], *y = &to.y[first];
  uint8_t* lit = &to.lit[first];
  for (size_t i = 0; i < count; ++i) {
    const uint8_t* record = &records[i * 6];
    x[i] = Word(record);
    y[i] = Word(record + 2);
    lit[i] = LitFrom(record[4]);
  }
}

void Decode2dTrueColour(std::span<const uint8_t> records, IldaDrawing& to, size_t first) {
  const size_t count = records.size() / 8;
  int16_t *x = &to.x[first], *y = &to.y[first];
  uint8_t *lit = &to.lit[first], *red = &to.red[first], *green = &to.green[first], *blue = &to.blue[first];
  for (size_t i = 0; i < count; ++i) {
    const uint8_t* record = &records[i * 8];
    x[i] = Word(record);
    y[i] = Word(record + 2);
    lit[i] = LitFrom(record[4]);
    blue[i] = record[5];
    green[i] = record[6];
    red[i] = record[7];
  }
}

void DecodeFrame(std::span<const uint8_t> records, IldaDrawing& to, size_t first) {
  if (records.empty()) return;
  switch (to.frameType) {
    case k3dIndexed: return Decode3dIndexed(records, to, first);
    case k2dIndexed: return Decode2dIndexed(records, to, first);
    case k2dTrueColour: return Decode2dTrueColour(records, to, first);
    default: return;  // counted, but its points stay dark at the origin
  }
}

using Section = std::span<const uint8_t>;  // the records of one frame

// The records of every frame that the file holds at least the header of.
std::vector<Section> FindFrames(BigEndianReader in, IldaDrawing& drawing) {
  std::vector<Section> frames;
  const size_t recordBytes = RecordBytes(drawing.frameType);
  size_t total = 0;
  SectionHeader header;
  while (frames.size() < drawing.frameCount && ReadHeader(in, header)) {
    const size_t records = std::min<size_t>(header.records, in.Left() / recordBytes);
    frames.push_back(in.Bytes(records * recordBytes));
    total += records;
    drawing.frameEnds.push_back(static_cast<uint32_t>(total));
    drawing.largestFrame = std::max(drawing.largestFrame, static_cast<unsigned>(records));
  }
  return frames;
}

void MakeRoom(IldaDrawing& drawing) {
  const size_t points = drawing.frameEnds.empty() ? 0 : drawing.frameEnds.back();
  for (auto* words : {&drawing.x, &drawing.y}) words->assign(points, 0);
  drawing.lit.assign(points, 0);
  if (drawing.frameType == k3dIndexed) drawing.z.assign(points, 0);
  if (drawing.frameType != k2dTrueColour) return;
  for (auto* bytes : {&drawing.red, &drawing.green, &drawing.blue}) bytes->assign(points, 0);
}

}  // namespace

IldaFrame IldaDrawing::Frame(unsigned frame) const {
  if (frame < 1 || frame > frameEnds.size()) return {};
  const size_t first = frame > 1 ? frameEnds[frame - 2] : 0;
  return {first, frameEnds[frame - 1] - first};
}

IldaDrawing DecodeIlda(std::span<const uint8_t> file) {
  BigEndianReader in(file);
  if (BigEndianReader(in).U32() != kMagic) return {};

  SectionHeader header;
  BigEndianReader frames = in;
  if (!ReadHeader(in, header)) return {};
  if (header.format == kPalette) {  // at most one, in front; its colours are not used
    in.Skip(header.records * kColourBytes);
    frames = in;
    if (!ReadHeader(in, header)) return {};
  }

  IldaDrawing drawing;
  drawing.frameType = header.format;
  drawing.frameCount = header.frames;
  const std::vector<Section> sections = FindFrames(frames, drawing);
  MakeRoom(drawing);
  for (size_t i = 0; i < sections.size(); ++i) {
    DecodeFrame(sections[i], drawing, drawing.Frame(static_cast<unsigned>(i + 1)).first);
  }
  return drawing;
}

}  // namespace zrv
