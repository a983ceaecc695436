// SPDX-License-Identifier: Apache-2.0
#include "simulator/lumaview/decode/JpegSession.h"

#include <jerror.h>

#include <algorithm>
#include <type_traits>

namespace sim::lumaview {

/// The one frame that libjpeg's errors jump to. `step` is a lambda over references: nothing in it is left undestroyed.
template <typename Step>
bool JpegSession::Succeeds(Step step) {
  static_assert(std::is_trivially_destructible_v<Step>);
  if (setjmp(m_escape) != 0) {
    return false;
  }
  step();
  return true;
}

template <typename Step>
Status JpegSession::Run(Step step) {
  return Succeeds(step) ? Ok() : Status(m_error);
}

JpegSession::JpegSession(Source& source, uint64_t start) : m_source(source), m_position(start) {
  m_cinfo.err = jpeg_std_error(&m_error_manager);
  m_error_manager.error_exit = OnError;
  m_error_manager.emit_message = OnMessage;
  m_cinfo.client_data = this;
  m_source_manager.init_source = [](j_decompress_ptr) {};
  m_source_manager.fill_input_buffer = [](j_decompress_ptr cinfo) -> boolean {
    return Self(reinterpret_cast<j_common_ptr>(cinfo)).Fill() ? TRUE : FALSE;
  };
  m_source_manager.skip_input_data = [](j_decompress_ptr cinfo, long bytes) {
    Self(reinterpret_cast<j_common_ptr>(cinfo)).Skip(bytes);
  };
  m_source_manager.resync_to_restart = jpeg_resync_to_restart;
  m_source_manager.term_source = [](j_decompress_ptr) {};
  m_progress_manager.progress_monitor = OnProgress;
}

JpegSession::~JpegSession() {
  jpeg_destroy_decompress(&m_cinfo);
}

Status JpegSession::ReadHeader() {
  return Run([this] {
    jpeg_create_decompress(&m_cinfo);
    HookCoefficients();
    m_cinfo.src = &m_source_manager;
    m_cinfo.progress = &m_progress_manager;
    jpeg_read_header(&m_cinfo, TRUE);
  });
}

Status JpegSession::Start(Size ideal, Threads threads) {
  SIM_TRY(Run([this, ideal] {
    ChooseLayout();
    ChooseScale(ideal);
  }));
  if (threads == Threads::kTwo && GainsByThread()) {
    m_ahead = JpegScanAhead::Start(m_cinfo, m_source, m_position - m_source_manager.bytes_in_buffer);
  }
  return Run([this] {
    if (m_ahead != nullptr) {
      StartOutputOfAhead();
    } else {
      jpeg_start_decompress(&m_cinfo);
    }
  });
}

bool JpegSession::GainsByThread() const {
  const Limits& limits = m_source.GetLimits();
  const Size size = GetOutputSize();
  const uint64_t pixels = static_cast<uint64_t>(size.width) * static_cast<uint64_t>(size.height);
  const uint64_t bytes = std::max<uint64_t>(m_source.GetSize(), 1);
  return bytes >= limits.jpeg_thread_bytes && pixels / bytes <= limits.jpeg_thread_pixels;
}

/// In the mode for files that are shown while they come in, libjpeg takes the coefficients from arrays, which it lets
/// others keep. As far as it knows the file ends behind its header, so that it has nothing to read.
void JpegSession::StartOutputOfAhead() {
  constexpr int kOnlyScan = 1;
  m_cinfo.buffered_image = TRUE;
  m_cinfo.do_block_smoothing = FALSE;
  m_source_manager.bytes_in_buffer = 0;
  jpeg_start_decompress(&m_cinfo);
  jpeg_start_output(&m_cinfo, kOnlyScan);
}

Result<int> JpegSession::ReadRows(std::span<JSAMPROW> rows) {
  SIM_TRY(m_source.CheckRunning());
  JDIMENSION read = 0;
  SIM_TRY(Run([&] { read = jpeg_read_scanlines(&m_cinfo, rows.data(), static_cast<JDIMENSION>(rows.size())); }));
  if (read == 0) {
    return Error{kDamaged, "the JPEG stream ends before the picture's last row"};
  }
  return static_cast<int>(read);
}

Status JpegSession::Finish() {
  if (m_is_cut_off) {
    return Error{kDamaged, "the file ends in the middle of the picture"};
  }
  return Ok();
}

Size JpegSession::GetStoredSize() const {
  return {static_cast<int>(m_cinfo.image_width), static_cast<int>(m_cinfo.image_height)};
}

Size JpegSession::GetOutputSize() const {
  return {static_cast<int>(m_cinfo.output_width), static_cast<int>(m_cinfo.output_height)};
}

void JpegSession::ChooseLayout() {
  switch (m_cinfo.jpeg_color_space) {
    case JCS_GRAYSCALE:
      m_cinfo.out_color_space = JCS_GRAYSCALE;
      m_layout = PixelLayout::kGray;
      break;
    case JCS_CMYK:
    case JCS_YCCK:
      m_cinfo.out_color_space = JCS_CMYK;
      m_layout = PixelLayout::kCmyk;
      break;
    default:
      m_cinfo.out_color_space = JCS_EXT_BGRX;
      m_layout = PixelLayout::kBgrx;
      break;
  }
}

/// The scales between these make libjpeg-turbo leave its fast transforms: they are slower than the full size.
void JpegSession::ChooseScale(Size ideal) {
  m_cinfo.scale_denom = 8;
  for (const unsigned int numerator : {1u, 2u, 4u, 8u}) {
    m_cinfo.scale_num = numerator;
    jpeg_calc_output_dimensions(&m_cinfo);
    const Size size = GetOutputSize();
    if (size.width >= ideal.width && size.height >= ideal.height) {
      break;
    }
  }
}

/// libjpeg keeps all coefficients of a progressive file in memory; its table of functions lets others do it.
void JpegSession::HookCoefficients() {
  m_realize_others = m_cinfo.mem->realize_virt_arrays;
  m_cinfo.mem->request_virt_barray = OnRequest;
  m_cinfo.mem->realize_virt_arrays = OnRealize;
  m_cinfo.mem->access_virt_barray = OnAccess;
}

jvirt_barray_ptr JpegSession::OnRequest(j_common_ptr cinfo, int, boolean, JDIMENSION blocks, JDIMENSION rows,
                                        JDIMENSION) {
  return Self(cinfo).m_coefficients.Request(blocks, rows);
}

void JpegSession::OnRealize(j_common_ptr cinfo) {
  JpegSession& self = Self(cinfo);
  self.m_realize_others(cinfo);
  if (!self.MakeRoom()) {
    self.Escape();
  }
}

bool JpegSession::MakeRoom() {
  const Status status = m_ahead != nullptr ? Ok() : m_coefficients.Realize(m_source);
  if (!status) {
    m_error = status.error();
  }
  return static_cast<bool>(status);
}

JBLOCKARRAY JpegSession::OnAccess(j_common_ptr cinfo, jvirt_barray_ptr array, JDIMENSION first, JDIMENSION count,
                                  boolean writable) {
  JpegSession& self = Self(cinfo);
  if (self.m_ahead != nullptr) {
    return self.AccessAhead(array, first, writable != FALSE);
  }
  const JBLOCKARRAY rows = self.m_coefficients.Access(array, first, count);
  if (rows == nullptr) {
    self.m_error.code = kOutOfMemory;
    self.m_error.reason = "JPEG: the coefficients' file cannot be mapped";
    self.Escape();
  }
  return rows;
}

JBLOCKARRAY JpegSession::AccessAhead(jvirt_barray_ptr array, JDIMENSION first, bool writable) {
  const size_t component = m_coefficients.IndexOf(array);
  if (writable) {
    return m_ahead->GetUnread(component);
  }
  const JBLOCKARRAY rows = m_ahead->Take(component, first);
  if (rows == nullptr) {
    m_is_stuck = true;
    Escape();
  }
  return rows;
}

/// At the file's end libjpeg is given an end marker: it fills what is missing, and a warning tells that it did.
bool JpegSession::Fill() {
  static constexpr uint8_t kEndMarker[] = {0xFF, JPEG_EOI};
  size_t read = 0;
  if (m_ahead == nullptr) {
    m_source.Seek(m_position);
    read = m_source.Read(m_buffer);
    m_position += read;
    m_at_end = m_at_end || read == 0;
  }
  m_source_manager.next_input_byte = read > 0 ? m_buffer.data() : kEndMarker;
  m_source_manager.bytes_in_buffer = read > 0 ? read : sizeof kEndMarker;
  return true;
}

void JpegSession::Skip(long bytes) {
  if (bytes <= 0) {
    return;
  }
  const size_t held = std::min(static_cast<size_t>(bytes), m_source_manager.bytes_in_buffer);
  m_source_manager.next_input_byte += held;
  m_source_manager.bytes_in_buffer -= held;
  m_position += static_cast<uint64_t>(bytes) - held;
}

void JpegSession::Escape() {
  std::longjmp(m_escape, 1);
}

void JpegSession::OnError(j_common_ptr cinfo) {
  JpegSession& self = Self(cinfo);
  char message[JMSG_LENGTH_MAX];
  cinfo->err->format_message(cinfo, message);
  self.m_error.code = cinfo->err->msg_code == JERR_OUT_OF_MEMORY ? kOutOfMemory : kDamaged;
  self.m_error.reason.assign("JPEG: ").append(message);
  self.Escape();
}

void JpegSession::OnMessage(j_common_ptr cinfo, int level) {
  JpegSession& self = Self(cinfo);
  if (level < 0) {
    ++cinfo->err->num_warnings;
    self.m_is_cut_off = self.m_is_cut_off || (cinfo->err->msg_code == JWRN_HIT_MARKER && self.m_at_end);
  }
}

/// Called for every row of blocks of every scan, also while `Start` collects the scans of a progressive file.
void JpegSession::OnProgress(j_common_ptr cinfo) {
  JpegSession& self = Self(cinfo);
  const auto scans = static_cast<uint64_t>(self.m_cinfo.input_scan_number);
  const uint64_t most = self.m_source.GetLimits().scans;
  if (scans > most) {
    self.m_error = {kOverLimit, "the picture has more than " + std::to_string(most) + " scans"};
    self.Escape();
  }
  if (self.m_source.IsCancelled()) {
    self.m_error = self.m_source.CheckRunning().error();
    self.Escape();
  }
}

}  // namespace sim::lumaview
