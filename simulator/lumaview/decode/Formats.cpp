// SPDX-License-Identifier: Apache-2.0
#include "simulator/lumaview/decode/Formats.h"

#include <algorithm>
#include <array>
#include <initializer_list>

#include "simulator/lumaview/decode/Module.h"
#include "simulator/lumaview/decode/PlainDecoders.h"

namespace sim::lumaview {
namespace {

bool IsJpeg(Bytes head) {
  return HasText(head, 0, "\xFF\xD8\xFF");
}
bool IsPng(Bytes head) {
  return HasText(head, 0, "\x89PNG\r\n\x1A\n");
}
bool IsGif(Bytes head) {
  return HasText(head, 0, "GIF87a") || HasText(head, 0, "GIF89a");
}
bool IsWebp(Bytes head) {
  return HasText(head, 0, "RIFF") && HasText(head, 8, "WEBP");
}
bool IsTiff(Bytes head) {
  using namespace std::string_view_literals;
  return HasText(head, 0, "II*\0"sv) || HasText(head, 0, "MM\0*"sv) || HasText(head, 0, "II+\0"sv) ||
         HasText(head, 0, "MM\0+"sv);
}
/// Files of the ISO base media kind begin with a box that lists their brands; sequences have brands of their own.
bool HasBrand(Bytes head, std::initializer_list<std::string_view> brands) {
  if (head.size() < 12 || !HasText(head, 4, "ftyp")) {
    return false;
  }
  const size_t end = std::min<size_t>(BigEndian32(head.data()), head.size());
  for (size_t at = 8; at + 4 <= end; at += at == 8 ? 8 : 4) {
    if (std::any_of(brands.begin(), brands.end(), [&](std::string_view brand) { return HasText(head, at, brand); })) {
      return true;
    }
  }
  return false;
}
bool IsAvif(Bytes head) {
  return HasBrand(head, {"avif", "avis"});
}
bool IsHeic(Bytes head) {
  return IsAvif(head) ||
         HasBrand(head, {"heic", "heix", "heim", "heis", "hevc", "hevx", "hevm", "hevs", "mif1", "msf1"});
}
bool IsJxl(Bytes head) {
  return HasText(head, 0, "\xFF\x0A") || HasText(head, 4, "JXL \r\n\x87\n");
}

constexpr Format kFormats[] = {
    {"JPEG", IsJpeg, "jpeg"},
    {"PNG", IsPng, "png"},
    {"GIF", IsGif, "gif"},
    {"WebP", IsWebp, "webp"},
    {"TIFF", IsTiff, "tiff"},
    {"AVIF", IsAvif, "avif"},
    {"HEIC", IsHeic, "heic"},
    {"JPEG XL", IsJxl, "jxl"},
    {"BMP", IsBmp, nullptr, OpenBmp},
    {"PNM", IsPnm, nullptr, OpenPnm},
    {"QOI", IsQoi, nullptr, OpenQoi},
    {"TGA", IsTga, nullptr, OpenTga},
};

Result<std::unique_ptr<Decoder>> Open(const Format& format, Source& source) {
  source.Seek(0);
  if (format.open != nullptr) {
    return format.open(source);
  }
  const Result<const void*> factory = FindInModule(format.module, kDecoderSymbol);
  if (!factory) {
    return Error{kUnknownFormat, std::string(format.name) + ": " + factory.error().reason};
  }
  return (*static_cast<const DecoderFactory*>(*factory))(source);
}

}  // namespace

std::span<const Format> GetFormats() {
  return kFormats;
}

Result<std::unique_ptr<Decoder>> OpenPicture(Source& source) {
  std::array<uint8_t, kProbeBytes> buffer{};
  source.Seek(0);
  const Bytes head(buffer.data(), source.Read(buffer));
  Error unknown{kUnknownFormat, "the file is not a picture of a known format"};
  for (const Format& format : GetFormats()) {
    if (!format.probe(head)) {
      continue;
    }
    Result<std::unique_ptr<Decoder>> decoder = Open(format, source);
    if (decoder) {
      const Size stored = (*decoder)->GetInfo().stored;
      SIM_TRY(CheckSize(static_cast<uint64_t>(stored.width), static_cast<uint64_t>(stored.height), source.GetLimits()));
      return decoder;
    }
    if (decoder.error().code != kUnknownFormat) {
      return decoder;
    }
    unknown = decoder.error();
  }
  return unknown;
}

}  // namespace sim::lumaview
