// SPDX-License-Identifier: Apache-2.0
#include "simulator/lumaview/decode/PngSession.h"

#include <algorithm>
#include <type_traits>

namespace sim::lumaview {
namespace {

/// Texts and the like are skipped unread: they can be large when unpacked, and nobody looks at them.
constexpr png_byte kUnwantedChunks[] =
    "tEXt\0zTXt\0iTXt\0tIME\0hIST\0sPLT\0pCAL\0sCAL\0oFFs\0pHYs\0bKGD\0sBIT\0sTER\0gIFg\0gIFx\0gIFt\0dSIG\0";
constexpr int kUnwantedCount = (sizeof kUnwantedChunks - 1) / 5;
/// libpng reads this one whole, however long it says it is; as one that it does not know it is kept up to a limit.
constexpr png_byte kExifChunk[] = "eXIf";
/// libpng counts down from this number and stops at 2.
constexpr png_uint_32 kRoomForOneChunk = 3;

}  // namespace

/// The one frame that libpng's errors jump to. `step` is a lambda over references: nothing in it is left undestroyed.
template <typename Step>
bool PngSession::Succeeds(Step step) {
  static_assert(std::is_trivially_destructible_v<Step>);
  if (setjmp(m_escape) != 0) {
    return false;
  }
  step();
  return true;
}

template <typename Step>
Status PngSession::Run(Step step) {
  return Succeeds(step) ? Ok() : Status(m_error);
}

PngSession::PngSession(const Source& source, ReadFunction read) : m_source(source), m_read(std::move(read)) {}

PngSession::~PngSession() {
  png_destroy_read_struct(&m_png, &m_info, nullptr);
}

Status PngSession::ReadHeader() {
  const Limits& limits = m_source.GetLimits();
  m_error = {kOutOfMemory, "PNG: no memory"};
  return Run([this, &limits] {
    m_png = png_create_read_struct(PNG_LIBPNG_VER_STRING, this, OnError, [](png_structp, png_const_charp) {});
    m_info = m_png != nullptr ? png_create_info_struct(m_png) : nullptr;
    if (m_info == nullptr) {
      std::longjmp(m_escape, 1);
    }
    png_set_read_fn(m_png, this, OnRead);
    const auto side = static_cast<png_uint_32>(std::min<uint64_t>(limits.side, PNG_UINT_31_MAX));
    png_set_user_limits(m_png, side, side);
    png_set_chunk_malloc_max(m_png, limits.metadata_bytes);
    png_set_keep_unknown_chunks(m_png, PNG_HANDLE_CHUNK_NEVER, kUnwantedChunks, kUnwantedCount);
    png_set_keep_unknown_chunks(m_png, PNG_HANDLE_CHUNK_ALWAYS, kExifChunk, 1);
    png_set_chunk_cache_max(m_png, kRoomForOneChunk);
    png_read_info(m_png, m_info);
  });
}

Status PngSession::Start() {
  return Run([this] {
    ChooseLayout();
    png_set_interlace_handling(m_png);
    png_read_update_info(m_png, m_info);
  });
}

void PngSession::ChooseLayout() {
  const png_byte colour = png_get_color_type(m_png, m_info);
  // A transparency chunk at a wrong place is marked as there but holds nothing.
  int transparent_entries = 0;
  png_get_tRNS(m_png, m_info, nullptr, &transparent_entries, nullptr);
  const bool has_alpha = (colour & PNG_COLOR_MASK_ALPHA) != 0 || transparent_entries > 0;
  png_set_expand(m_png);
  png_set_scale_16(m_png);
  if (colour == PNG_COLOR_TYPE_GRAY && !has_alpha) {
    m_layout = PixelLayout::kGray;
    return;
  }
  m_layout = has_alpha ? PixelLayout::kBgra : PixelLayout::kBgrx;
  png_set_gray_to_rgb(m_png);
  png_set_bgr(m_png);
  png_set_filler(m_png, 0xFF, PNG_FILLER_AFTER);
}

Status PngSession::DeliverRows(const std::function<Status(int, const uint8_t*)>& deliver) {
  const Size size = GetSize();
  const size_t row_bytes = static_cast<size_t>(size.width) * static_cast<size_t>(BytesPerPixel(m_layout));
  if (png_get_rowbytes(m_png, m_info) != row_bytes) {
    return Error{kDamaged, "PNG: an unexpected row length"};
  }
  std::vector<uint8_t> pixels(IsInterlaced() ? row_bytes * static_cast<size_t>(size.height) : row_bytes);
  if (IsInterlaced()) {
    SIM_TRY(ReadPasses(pixels, row_bytes));
  }
  for (int y = 0; y < size.height; ++y) {
    uint8_t* row = IsInterlaced() ? &pixels[static_cast<size_t>(y) * row_bytes] : pixels.data();
    if (!IsInterlaced()) {
      SIM_TRY(m_source.CheckRunning());
      SIM_TRY(Run([&] { png_read_row(m_png, row, nullptr); }));
    }
    SIM_TRY(deliver(y, row));
  }
  return Ok();
}

Status PngSession::ReadPasses(std::vector<uint8_t>& pixels, size_t row_bytes) {
  for (int pass = 0; pass < PNG_INTERLACE_ADAM7_PASSES; ++pass) {
    for (size_t at = 0; at < pixels.size(); at += row_bytes) {
      SIM_TRY(m_source.CheckRunning());
      SIM_TRY(Run([&] { png_read_row(m_png, &pixels[at], nullptr); }));
    }
  }
  return Ok();
}

Status PngSession::Finish() {
  return Run([this] { png_read_end(m_png, nullptr); });
}

Size PngSession::GetSize() const {
  return {static_cast<int>(png_get_image_width(m_png, m_info)), static_cast<int>(png_get_image_height(m_png, m_info))};
}

bool PngSession::IsInterlaced() const {
  return png_get_interlace_type(m_png, m_info) != PNG_INTERLACE_NONE;
}

std::vector<uint8_t> PngSession::GetIcc() {
  png_charp name = nullptr;
  int compression = 0;
  png_bytep profile = nullptr;
  png_uint_32 length = 0;
  if (png_get_iCCP(m_png, m_info, &name, &compression, &profile, &length) == 0) {
    return {};
  }
  return {profile, profile + length};
}

std::vector<uint8_t> PngSession::GetExif() {
  png_unknown_chunkp chunks = nullptr;
  const int count = png_get_unknown_chunks(m_png, m_info, &chunks);
  return count > 0 ? std::vector<uint8_t>(chunks->data, chunks->data + chunks->size) : std::vector<uint8_t>();
}

/// Chunks that are skipped may be as long as the file. False with the reason in `m_error`.
bool PngSession::IsStillWanted() {
  const Status running = m_source.CheckRunning();
  if (!running) {
    m_error = running.error();
  }
  return static_cast<bool>(running);
}

void PngSession::OnRead(png_structp png, png_bytep data, size_t length) {
  auto& self = *static_cast<PngSession*>(png_get_io_ptr(png));
  if (!self.IsStillWanted()) {
    std::longjmp(self.m_escape, 1);
  }
  if (self.m_read({data, length}) != length) {
    png_error(png, "the file ends in the middle of the picture");
  }
}

void PngSession::OnError(png_structp png, png_const_charp message) {
  auto& self = *static_cast<PngSession*>(png_get_error_ptr(png));
  self.m_error.code = kDamaged;
  self.m_error.reason.assign("PNG: ").append(message);
  std::longjmp(self.m_escape, 1);
}

}  // namespace sim::lumaview
