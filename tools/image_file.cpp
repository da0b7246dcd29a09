#include "image_file.h"

#include <cairo.h>
#include <turbojpeg.h>

#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>

#include "errors.h"

namespace zrvtool {
namespace {

using Bytes = std::vector<unsigned char>;

constexpr std::size_t kMostPixels = 64000000;  // a small file can claim any size
constexpr unsigned char kPngMagic[] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
constexpr unsigned char kJpegMagic[] = {0xFF, 0xD8, 0xFF};

Bytes ReadAll(const std::string& name) {
  std::error_code ignored;
  std::ifstream in(name, std::ios::binary);
  if (!in || !std::filesystem::is_regular_file(name, ignored)) throw ToolError("cannot read " + name);
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

template <std::size_t N>
bool BeginsWith(const Bytes& bytes, const unsigned char (&magic)[N]) {
  return bytes.size() >= N && std::memcmp(bytes.data(), magic, N) == 0;
}

void CheckSize(const std::string& name, std::uint64_t width, std::uint64_t height) {
  if (width == 0 || height == 0 || width > kMostPixels || height > kMostPixels / width)
    throw ToolError(name + " has " + std::to_string(width) + " x " + std::to_string(height) +
                    " pixels, which is none or too many");
}

std::uint32_t BigEndian(const unsigned char* b) {
  return std::uint32_t{b[0]} << 24 | std::uint32_t{b[1]} << 16 | std::uint32_t{b[2]} << 8 | b[3];
}

struct PngSource {
  const Bytes& bytes;
  std::size_t position = 0;
};

cairo_status_t ReadSome(void* closure, unsigned char* data, unsigned int count) {
  PngSource& source = *static_cast<PngSource*>(closure);
  if (source.bytes.size() - source.position < count) return CAIRO_STATUS_READ_ERROR;
  std::memcpy(data, source.bytes.data() + source.position, count);
  source.position += count;
  return CAIRO_STATUS_SUCCESS;
}

struct SurfaceDeleter {
  void operator()(cairo_surface_t* s) const { cairo_surface_destroy(s); }
  void operator()(cairo_t* c) const { cairo_destroy(c); }
};

// Paints the picture on white: that settles transparency and every pixel format at once.
Image OnWhite(cairo_surface_t* png) {
  const int width = cairo_image_surface_get_width(png), height = cairo_image_surface_get_height(png);
  const std::unique_ptr<cairo_surface_t, SurfaceDeleter> page(
      cairo_image_surface_create(CAIRO_FORMAT_RGB24, width, height));
  const std::unique_ptr<cairo_t, SurfaceDeleter> context(cairo_create(page.get()));
  cairo_set_source_rgb(context.get(), 1, 1, 1);
  cairo_paint(context.get());
  cairo_set_source_surface(context.get(), png, 0, 0);
  cairo_paint(context.get());
  cairo_surface_flush(page.get());
  const unsigned char* rows = cairo_image_surface_get_data(page.get());
  Image image{width, height, {}};
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x) {
      std::uint32_t pixel = 0;  // 0x00RRGGBB in the machine's own order
      std::memcpy(&pixel, rows + std::ptrdiff_t{y} * cairo_image_surface_get_stride(page.get()) + 4 * x, 4);
      for (int shift : {0, 8, 16}) image.bgr.push_back(static_cast<unsigned char>(pixel >> shift));
    }
  return image;
}

Image LoadPng(const std::string& name, const Bytes& bytes) {
  constexpr std::size_t kWidthAt = 16, kHeightAt = 20, kHeaderEnd = 24;
  if (bytes.size() < kHeaderEnd) throw ToolError(name + " is cut short");
  CheckSize(name, BigEndian(&bytes[kWidthAt]), BigEndian(&bytes[kHeightAt]));
  PngSource source{bytes};
  const std::unique_ptr<cairo_surface_t, SurfaceDeleter> png(
      cairo_image_surface_create_from_png_stream(ReadSome, &source));
  if (cairo_surface_status(png.get()) != CAIRO_STATUS_SUCCESS)
    throw ToolError(name + " is a damaged PNG file: " + cairo_status_to_string(cairo_surface_status(png.get())));
  return OnWhite(png.get());
}

struct DecoderDeleter {
  void operator()(void* handle) const { tjDestroy(handle); }
};

Image LoadJpeg(const std::string& name, const Bytes& bytes) {
  const std::unique_ptr<void, DecoderDeleter> decoder(tjInitDecompress());
  Image image;
  int subsampling = 0, colours = 0;
  const auto size = static_cast<unsigned long>(bytes.size());
  if (!decoder ||
      tjDecompressHeader3(decoder.get(), bytes.data(), size, &image.width, &image.height, &subsampling, &colours) != 0)
    throw ToolError(name + " is a damaged JPEG file");
  CheckSize(name, static_cast<std::uint64_t>(image.width), static_cast<std::uint64_t>(image.height));
  image.bgr.resize(3 * static_cast<std::size_t>(image.width) * static_cast<std::size_t>(image.height));
  if (tjDecompress2(decoder.get(), bytes.data(), size, image.bgr.data(), image.width, 0, image.height, TJPF_BGR, 0) !=
          0 &&
      tjGetErrorCode(decoder.get()) == TJERR_FATAL)
    throw ToolError(name + " is a damaged JPEG file: " + tjGetErrorStr2(decoder.get()));
  return image;
}

}  // namespace

bool IsImageFile(const std::string& name) {
  std::ifstream in(name, std::ios::binary);
  Bytes head(sizeof kPngMagic);
  in.read(reinterpret_cast<char*>(head.data()), sizeof kPngMagic);
  return in.gcount() == sizeof kPngMagic && (BeginsWith(head, kPngMagic) || BeginsWith(head, kJpegMagic));
}

Image LoadImage(const std::string& name) {
  const Bytes bytes = ReadAll(name);
  if (BeginsWith(bytes, kPngMagic)) return LoadPng(name, bytes);
  if (BeginsWith(bytes, kJpegMagic)) return LoadJpeg(name, bytes);
  throw ToolError(name + " is neither a PNG nor a JPEG file");
}

}  // namespace zrvtool
