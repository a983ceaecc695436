// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_LUMAVIEW_DECODE_LIMITS_H
#define SIMULATOR_LUMAVIEW_DECODE_LIMITS_H

#include <cstdint>
#include <string_view>

namespace sim::lumaview {

/// What one picture may cost. Checked before memory is taken. LUMAVIEW_LIMITS changes them for tests:
/// "pixels=1000000,seconds=1", names as below.
struct Limits {
  /// Above every camera (400 Mpx mosaics), below what a row-wise decoder needs minutes for.
  uint64_t pixels = 512'000'000;
  /// For formats that must hold the whole picture in memory: 64 Mpx is 256 MB.
  uint64_t whole_pixels = 64'000'000;
  /// Longest side; wider rows would overflow 16-bit formats and 32-bit products.
  uint64_t side = 1'000'000;
  /// File size for formats whose library wants the file in one piece.
  uint64_t whole_file_bytes = 256ull << 20;
  /// Compressed metadata that a library would unpack (profiles, texts).
  uint64_t metadata_bytes = 8ull << 20;
  /// Frames of an animation; a 10-minute animation at 30 frames a second.
  uint64_t frames = 18'000;
  /// Scans of a progressive JPEG: each goes over the whole picture; encoders make about 10.
  uint64_t scans = 100;
  /// Progressive JPEG: coefficients that may stay in memory; above it they go to an unlinked file.
  uint64_t coefficient_bytes = 96ull << 20;
  /// JPEG: from this size of file on a second thread reads the coefficients; smaller ones are over before it pays.
  uint64_t jpeg_thread_bytes = 200'000;
  /// And with no more decoded pixels a byte of the file than these: else scaling takes longest, which has a thread too.
  uint64_t jpeg_thread_pixels = 2;
  /// Time of one decode.
  uint64_t seconds = 10;
};

/// The defaults, changed by `text`, which looks as LUMAVIEW_LIMITS does.
Limits ParseLimits(std::string_view text);

/// The defaults, changed by LUMAVIEW_LIMITS. An unknown name or number in it is logged and skipped.
const Limits& GetLimits();

}  // namespace sim::lumaview

#endif
