// SPDX-License-Identifier: Apache-2.0
#include "simulator/lumaview/decode/Exif.h"

#include <libexif/exif-data.h>

#include "simulator/base/CHandle.h"

namespace sim::lumaview {
namespace {

/// EXIF blocks of JPEG files are at most this long, and libexif takes no longer ones.
constexpr size_t kLongestBlock = 65533;

using ExifHandle = CHandle<ExifData, exif_data_unref>;

uint8_t FindOrientation(ExifData* data) {
  const ExifEntry* entry = exif_content_get_entry(data->ifd[EXIF_IFD_0], EXIF_TAG_ORIENTATION);
  if (entry == nullptr || entry->format != EXIF_FORMAT_SHORT || entry->components < 1 || entry->size < 2) {
    return 1;
  }
  const ExifShort value = exif_get_short(entry->data, exif_data_get_byte_order(data));
  return value >= 1 && value <= 8 ? static_cast<uint8_t>(value) : uint8_t{1};
}

}  // namespace

Exif ParseExif(std::span<const uint8_t> tiff) {
  Exif exif;
  std::vector<uint8_t> block = {'E', 'x', 'i', 'f', 0, 0};
  if (tiff.size() + block.size() > kLongestBlock) {
    tiff = tiff.first(kLongestBlock - block.size());
  }
  block.insert(block.end(), tiff.begin(), tiff.end());
  const ExifHandle data(exif_data_new());
  if (!data) {
    return exif;
  }
  // Offered "corrections" would rewrite entries; only two facts are wanted, as they are.
  exif_data_unset_option(data.get(), EXIF_DATA_OPTION_FOLLOW_SPECIFICATION);
  exif_data_load_data(data.get(), block.data(), static_cast<unsigned int>(block.size()));
  exif.orientation = FindOrientation(data.get());
  if (data->data != nullptr && data->size > 0) {
    exif.thumbnail.assign(data->data, data->data + data->size);
  }
  return exif;
}

}  // namespace sim::lumaview
