// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_LUMAVIEW_DECODE_PNGSESSION_H
#define SIMULATOR_LUMAVIEW_DECODE_PNGSESSION_H

#include <png.h>

#include <csetjmp>
#include <functional>

#include "simulator/lumaview/decode/Decoder.h"

namespace sim::lumaview {

/// One run of libpng over one PNG stream. Its errors leave by longjmp; only `Succeeds` is jumped to, and what runs
/// there owns nothing.
class PngSession {
 public:
  /// Fills the span from the stream; the number of bytes, fewer only at its end.
  using ReadFunction = std::function<size_t(std::span<uint8_t>)>;

  PngSession(const Source& source, ReadFunction read);
  ~PngSession();
  PngSession(const PngSession&) = delete;
  PngSession& operator=(const PngSession&) = delete;

  Status ReadHeader();
  /// Asks libpng for 8 bits in our layouts; afterwards rows can be read.
  Status Start();
  /// Delivers all rows: one at a time, or after the last pass of an interlaced picture.
  Status DeliverRows(const std::function<Status(int y, const uint8_t* row)>& deliver);
  /// Reads what follows the picture's data, which checks its end.
  Status Finish();

  Size GetSize() const;
  bool IsInterlaced() const;
  PixelLayout GetLayout() const { return m_layout; }
  std::vector<uint8_t> GetIcc();
  std::vector<uint8_t> GetExif();

 private:
  template <typename Step>
  [[gnu::noinline]] bool Succeeds(Step step);
  template <typename Step>
  Status Run(Step step);
  Status ReadPasses(std::vector<uint8_t>& pixels, size_t row_bytes);
  void ChooseLayout();
  bool IsStillWanted();

  static void OnRead(png_structp png, png_bytep data, size_t length);
  static void OnError(png_structp png, png_const_charp message);

  const Source& m_source;
  ReadFunction m_read;
  png_structp m_png = nullptr;
  png_infop m_info = nullptr;
  Error m_error;
  PixelLayout m_layout = PixelLayout::kBgrx;
  std::jmp_buf m_escape{};
};

}  // namespace sim::lumaview

#endif
