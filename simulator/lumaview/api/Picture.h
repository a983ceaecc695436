// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_LUMAVIEW_API_PICTURE_H
#define SIMULATOR_LUMAVIEW_API_PICTURE_H

#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "platform/lumaview.h"
#include "simulator/lumaview/api/Services.h"

namespace sim::lumaview {

/// One picture handle. Decoding starts with it, in the background and for the window that is expected; parse and
/// decode requests are answered from what is there by then. All operations are thread-safe and, unless they say
/// otherwise, return at once.
class Picture : public std::enable_shared_from_this<Picture> {
 public:
  /// Opens `path` and starts to decode it. Errors: kCannotOpen.
  static Result<std::shared_ptr<Picture>> Create(Services& services, const std::string& path);
  Picture(const Picture&) = delete;
  Picture& operator=(const Picture&) = delete;

  _lumaview_s* GetRecord() { return &m_record; }
  const PictureFilePtr& GetFile() const { return m_file; }

  /// A null callback ends the reports. Errors: kBadArgument for an event that pictures do not have.
  Status SetCallback(lumaview_event_type_e type, lumaview_event_cb callback);
  /// With a parse callback the header is reported there; without one it is read on the calling thread.
  Status Parse();
  /// Shows the picture in its window, once it is decoded, and reports that. Without a window it is only decoded.
  Status Decode();
  /// Reads the header on the calling thread unless it is known.
  Result<PictureInfo> GetInfo();

  /// Errors: kBadArgument; kDisplayFailed where no display is prepared, and the window is kept all the same.
  Status SetWindow(unsigned long window);
  /// A display lock concerns the window, so it outlives the picture.
  Status SetDisplayLock(unsigned long window, bool locked);
  Status SetStereo(int mode);
  /// `zoom` 1..16, `rotation` 0, 90, 180 or 270.
  Status SetZoomAndRotation(int zoom, int rotation);
  /// Moves the view by an eighth of the window, as far as the picture reaches; `x` and `y` receive how far the view
  /// stands to the right of and below the picture's middle, in window pixels.
  Status Move(lumaview_key_direction_e direction, int& x, int& y);
  /// The picture as it is, fitted into the window; nothing while it is not decoded or is looked at in another way.
  std::optional<Rendered> GetWhole() const;
  /// Errors: kNotReady before the picture was decoded on request.
  Result<float> GetZoom() const;

  /// Ends everything: once this returns no callback runs or will run, except one that this is called from. What was
  /// decoded and not shown goes into the cache.
  void Close();

 private:
  Picture(Services& services, PictureFilePtr file);

  // With m_mutex held.
  Size ExpectedSize() const;
  void Prepare();
  void ShowPrepared();
  void ChangeView(const View& view);
  void Report(lumaview_event_type_e type, lumaview_event_result_e result, int times = 1);

  void OnHeader(uint64_t generation, const Result<PictureInfo>& header);
  void OnFrame(uint64_t generation, Result<Rendered> rendered);
  void OnShown(const Status& shown, int reports);

  _lumaview_s m_record{};
  Services& m_services;
  const PictureFilePtr m_file;
  const Presenter::Owner m_id;
  const Reporter::RecipientPtr m_recipient;

  mutable std::mutex m_mutex;
  bool m_closed = false;
  View m_view;
  unsigned long m_window = 0;              ///< 0 = none was set
  std::shared_ptr<Rendering> m_rendering;  ///< null once it has ended
  uint64_t m_generation = 0;               ///< of the rendering started last
  Size m_prepared_size;                    ///< of the window that it is made for
  bool m_outdated = false;                 ///< the view has changed since it was started
  std::optional<Result<PictureInfo>> m_header;
  std::optional<Result<Rendered>> m_rendered;
  int m_parse_reports = 0;     ///< asked for and not given yet
  int m_decode_reports = 0;    ///< likewise
  bool m_show_wanted = false;  ///< decoding was asked for: what is rendered goes to the screen
  bool m_handed_over = false;  ///< `m_rendered` went to the screen
  bool m_decoded = false;      ///< a requested decode has succeeded
};

/// A number for each handle, from 1.
Presenter::Owner NextOwner();

}  // namespace sim::lumaview

#endif
