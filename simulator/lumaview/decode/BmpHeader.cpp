// SPDX-License-Identifier: Apache-2.0
#include "simulator/lumaview/decode/BmpHeader.h"

#include <bit>

#include "simulator/lumaview/decode/Bytes.h"

namespace sim::lumaview {
namespace {

constexpr size_t kFileHeaderBytes = 14;
constexpr uint32_t kCoreHeaderBytes = 12;
constexpr uint32_t kInfoHeaderBytes = 40;
constexpr uint32_t kOs2HeaderBytes = 64;
constexpr uint32_t kLongestHeaderBytes = 124;
/// Writers that count wrong are known, but not by more than this.
constexpr uint32_t kMostColours = 4096;
constexpr uint32_t kEmbeddedProfile = 0x4D424544;

enum Compression : uint32_t { kRgb = 0, kRle8 = 1, kRle4 = 2, kBitFields = 3, kRle24OnOs2 = 4, kAlphaBitFields = 6 };

Error Damaged(const std::string& what) {
  return {kDamaged, "BMP: " + what};
}

/// The header behind the file's header; fields that a shorter one does not have are 0.
struct Fields {
  uint32_t length = 0;
  int64_t width = 0;
  int64_t height = 0;
  int bits = 0;
  uint32_t compression = 0;
  uint32_t colours = 0;
  std::array<uint8_t, kLongestHeaderBytes> raw{};
};

Result<Fields> ReadFields(Source& source) {
  Fields fields;
  source.Seek(kFileHeaderBytes);
  std::array<uint8_t, 4> length{};
  source.Read(length);
  fields.length = LittleEndian32(length.data());
  const bool is_known =
      fields.length == kCoreHeaderBytes || (fields.length >= 16 && fields.length <= kLongestHeaderBytes);
  if (!is_known) {
    return Damaged("a header of " + std::to_string(fields.length) + " bytes");
  }
  source.Seek(kFileHeaderBytes);
  if (source.Read(std::span(fields.raw).first(fields.length)) != fields.length) {
    return Damaged("the file ends in its header");
  }
  const uint8_t* raw = fields.raw.data();
  if (fields.length == kCoreHeaderBytes) {
    fields.width = LittleEndian16(raw + 4);
    fields.height = LittleEndian16(raw + 6);
    fields.bits = LittleEndian16(raw + 10);
    return fields;
  }
  fields.width = static_cast<int32_t>(LittleEndian32(raw + 4));
  fields.height = static_cast<int32_t>(LittleEndian32(raw + 8));
  fields.bits = LittleEndian16(raw + 14);
  fields.compression = LittleEndian32(raw + 16);
  fields.colours = LittleEndian32(raw + 32);
  return fields;
}

Status SetCoding(const Fields& fields, BmpHeader& header) {
  using Coding = BmpHeader::Coding;
  const bool is_os2 = fields.length == kOs2HeaderBytes;
  if (fields.compression == kRgb ||
      (!is_os2 && (fields.compression == kBitFields || fields.compression == kAlphaBitFields))) {
    header.coding = Coding::kPlain;
  } else if (fields.compression == kRle8 && fields.bits == 8) {
    header.coding = Coding::kRle8;
  } else if (fields.compression == kRle4 && fields.bits == 4) {
    header.coding = Coding::kRle4;
  } else if (fields.compression == kRle24OnOs2 && fields.bits == 24) {
    header.coding = Coding::kRle24;
  } else {
    return Damaged("compression " + std::to_string(fields.compression) + " with " + std::to_string(fields.bits) +
                   " bits");
  }
  return Ok();
}

/// The masks stand behind a header of 40 bytes, and inside of the longer ones.
Status SetMasks(Source& source, const Fields& fields, BmpHeader& header) {
  if (fields.compression != kBitFields && fields.compression != kAlphaBitFields) {
    header.masks = header.bits == 16 ? std::array<BmpMask, 4>{{{0x7C00}, {0x03E0}, {0x001F}, {0}}}
                                     : std::array<BmpMask, 4>{{{0xFF0000}, {0x00FF00}, {0x0000FF}, {0}}};
    return Ok();
  }
  if (header.bits != 16 && header.bits != 32) {
    return Damaged("colour masks with " + std::to_string(header.bits) + " bits");
  }
  std::array<uint8_t, 16> bytes{};
  source.Seek(kFileHeaderBytes + kInfoHeaderBytes);
  source.Read(bytes);
  const bool has_alpha_mask = fields.compression == kAlphaBitFields || fields.length >= 56;
  for (size_t i = 0; i < 4; ++i) {
    header.masks[i].bits = i < 3 || has_alpha_mask ? LittleEndian32(&bytes[4 * i]) : 0;
  }
  header.has_alpha = header.masks[3].bits != 0;
  return Ok();
}

void SetPalette(Source& source, const Fields& fields, BmpHeader& header) {
  if (header.bits > 8) {
    return;
  }
  const bool is_core = fields.length == kCoreHeaderBytes;
  const size_t entry_bytes = is_core ? 3 : 4;
  const size_t most = size_t{1} << header.bits;
  const size_t count = fields.colours == 0 || is_core ? most : std::min<size_t>(fields.colours, most);
  uint64_t position = kFileHeaderBytes + fields.length;
  if (fields.length == kInfoHeaderBytes &&
      (fields.compression == kBitFields || fields.compression == kAlphaBitFields)) {
    position += fields.compression == kBitFields ? 12 : 16;
  }
  std::vector<uint8_t> bytes(count * entry_bytes);
  source.Seek(position);
  source.Read(bytes);
  header.palette.assign(most, {0, 0, 0, 255});
  for (size_t i = 0; i < count; ++i) {
    const uint8_t* entry = &bytes[i * entry_bytes];
    header.palette[i] = {entry[0], entry[1], entry[2], 255};
  }
}

void SetProfile(Source& source, const Fields& fields, BmpHeader& header) {
  if (fields.length < kLongestHeaderBytes || LittleEndian32(&fields.raw[56]) != kEmbeddedProfile) {
    return;
  }
  const uint32_t offset = LittleEndian32(&fields.raw[112]);
  const uint32_t length = LittleEndian32(&fields.raw[116]);
  if (length <= source.GetLimits().metadata_bytes && length <= source.GetSize()) {
    header.icc.resize(length);
    source.Seek(kFileHeaderBytes + uint64_t{offset});
    header.icc.resize(source.Read(header.icc));
  }
}

bool IsDepth(int bits) {
  return bits == 1 || bits == 2 || bits == 4 || bits == 8 || bits == 16 || bits == 24 || bits == 32;
}

}  // namespace

uint8_t BmpMask::Get(uint32_t pixel, uint8_t missing) const {
  if (bits == 0) {
    return missing;
  }
  const int shift = std::countr_zero(bits);
  const uint64_t most = bits >> shift;
  return static_cast<uint8_t>((uint64_t{(pixel & bits) >> shift} * 255 + most / 2) / most);
}

Result<BmpHeader> ReadBmpHeader(Source& source) {
  const Result<Fields> fields = ReadFields(source);
  if (!fields) {
    return fields.error();
  }
  BmpHeader header;
  header.is_top_down = fields->height < 0;
  const int64_t height = header.is_top_down ? -fields->height : fields->height;
  if (fields->width <= 0 || height <= 0) {
    return Damaged("a size of " + std::to_string(fields->width) + " x " + std::to_string(fields->height));
  }
  SIM_TRY(CheckSize(static_cast<uint64_t>(fields->width), static_cast<uint64_t>(height), source.GetLimits()));
  header.size = {static_cast<int>(fields->width), static_cast<int>(height)};
  header.bits = fields->bits;
  if (fields->colours > kMostColours && header.bits <= 8) {
    return Damaged("a palette of " + std::to_string(fields->colours) + " colours");
  }
  if (!IsDepth(header.bits)) {
    return Damaged(std::to_string(header.bits) + " bits for a pixel");
  }
  SIM_TRY(SetCoding(*fields, header));
  SIM_TRY(SetMasks(source, *fields, header));
  SetPalette(source, *fields, header);
  SetProfile(source, *fields, header);
  std::array<uint8_t, 4> offset{};
  source.Seek(10);
  source.Read(offset);
  header.data = LittleEndian32(offset.data());
  if (header.data < kFileHeaderBytes + kCoreHeaderBytes || header.data >= source.GetSize()) {
    return Damaged("the pixels begin at " + std::to_string(header.data) + ", outside of the file");
  }
  return header;
}

}  // namespace sim::lumaview
