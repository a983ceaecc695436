// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_LUMAVIEW_ANIMATE_PRESENTER_H
#define SIMULATOR_LUMAVIEW_ANIMATE_PRESENTER_H

#include <atomic>
#include <functional>
#include <future>
#include <memory>
#include <optional>
#include <thread>
#include <vector>

#include "simulator/base/Result.h"
#include "simulator/lumaview/animate/AnimationTimeline.h"
#include "simulator/lumaview/animate/Bands.h"
#include "simulator/lumaview/animate/Clock.h"
#include "simulator/lumaview/animate/TaskQueue.h"
#include "simulator/lumaview/animate/TransitionTimeline.h"
#include "simulator/lumaview/effect/Resample.h"
#include "simulator/lumaview/picture/Rendering.h"
#include "simulator/lumaview/picture/WorkerPool.h"
#include "simulator/lumaview/screen/Surface.h"

namespace sim::lumaview {

/// What one window shows, and the one thread that draws there: pictures, animations, transitions. It sleeps while a
/// still picture is shown. Public operations are thread-safe and, but for `Open` and `Close`, return at once.
class Presenter : public std::enable_shared_from_this<Presenter> {
 public:
  /// The handle on whose behalf something is shown.
  using Owner = uint64_t;
  /// Called once, on the presenter's thread with no lock held: when the picture is on the screen, or why it will not
  /// be. A locked display counts a picture as shown when it has taken it.
  using Done = std::function<void(const Status&)>;

  /// What a presenter uses; all outlive it.
  struct Services {
    WorkerPool& pool;
    const Clock& clock;
    std::function<void(Size)> on_size;  ///< the window's size, at first and after each change; called on any thread
  };

  /// Draws on `parent` from now on. Errors: kDisplayFailed, kOutOfMemory.
  static Result<std::shared_ptr<Presenter>> Open(xcb_window_t parent, Services services);
  ~Presenter();
  Presenter(const Presenter&) = delete;
  Presenter& operator=(const Presenter&) = delete;

  /// The window or the server is lost; nothing can be shown any more.
  bool IsGone() const { return m_gone; }
  Size GetSize() const;

  /// Shows `picture` instead of what is shown or running.
  void Show(Rendered picture, Owner owner, Done done);
  /// Goes from what the window shows to `picture` by effect `number` (0..23).
  void RunEffect(int number, Rendered picture, Owner owner, Done done);
  /// The handle is gone: its transition ends on its picture, its animation stops, what waits for it is dropped. The
  /// last frame stays.
  void Leave(Owner owner);
  /// While locked nothing new reaches the screen; the newest does once it is unlocked.
  void SetLock(bool locked);
  /// Takes the pictures off the window and ends the thread. Nothing is shown any more afterwards.
  void Close();

 private:
  struct Transition {
    int number;
    FramePtr from;
    Rendered to;
    Owner owner;
    Done done;
    TransitionTimeline timeline;
  };
  struct Animation {
    std::shared_ptr<FrameStream> stream;
    AnimationTimeline timeline;
    bool preparing = false;
    FramePtr next;              ///< prepared; null = not yet
    int next_milliseconds = 0;  ///< how long `next` is to be shown
  };
  /// A slow pan and zoom of a still picture.
  struct Motion {
    FramePtr picture;
    Area from;
    Area to;
    TransitionTimeline timeline;
  };
  /// A picture that has to be decoded again because the window has another size.
  struct Rerender {
    Rendered picture;
    Owner owner = 0;
    std::vector<Done> done;
    std::optional<int> effect;  ///< how it will be shown
    bool refresh = false;       ///< it is what is shown already
    std::shared_ptr<Rendering> rendering;
  };
  /// A frame that is to be put as soon as the server can take it.
  struct Wanted {
    FramePtr frame;
    Owner owner = 0;
    std::vector<Done> done;
  };
  /// A frame that was put and is not on the screen yet.
  struct OnItsWay {
    uint64_t put;
    Time since;
    std::vector<Done> done;
  };

  Presenter(xcb_window_t parent, Services services);

  // Presenter.cpp: the thread
  void Run(std::promise<Status>& opened);
  void Loop();
  void Pump();
  void Wait();
  Time NextWakeUp() const;
  void HandleNews(const Surface::News& news);
  void LoseWindow(const Error& error);
  void StoreSize(Size size);

  // PresenterContent.cpp: pictures and frames
  void PostAccept(Rendered picture, Owner owner, Done done, std::optional<int> effect);
  void Accept(Rendered picture, Owner owner, std::vector<Done> done, std::optional<int> effect);
  void ShowNow(Rendered picture, Owner owner, std::vector<Done> done);
  void RenderAgain(Rerender request);
  void OnRenderedAgain(uint64_t number, Result<Rendered> rendered);
  void DropRerender(Owner successor, std::vector<Done>& done);
  void Want(FramePtr frame, Owner owner, std::vector<Done> done);
  void DropWanted();
  void PutWanted();
  bool Put(const FramePtr& frame, std::vector<Done> done);
  void FinishPuts();
  void FollowSize();

  // PresenterTransition.cpp
  void StartTransition(int number, Rendered picture, Owner owner, std::vector<Done> done);
  void StepTransition();
  void DrawStep(float progress);
  void FinishTransition();
  void ReplaceTransition();

  // PresenterAnimation.cpp
  void StartAnimation();
  void StepAnimation();
  void PrepareNextFrame();
  void StopAnimation();

  // PresenterMotion.cpp
  void StartMotion();
  void StepMotion();
  void StopMotion();

  const xcb_window_t m_parent;
  const Services m_services;
  TaskQueue m_tasks;
  std::thread m_thread;
  std::promise<void> m_ended;
  std::atomic<bool> m_gone{false};
  std::atomic<int> m_connection_fd{-1};
  std::atomic<uint64_t> m_packed_size{0};

  // The thread's own.
  std::unique_ptr<Surface> m_surface;
  bool m_closing = false;
  bool m_locked = false;
  bool m_exposed = false;             ///< `m_displayed` has to be put again
  FramePtr m_displayed;               ///< what the window shows
  std::optional<Rendered> m_content;  ///< what it shows, or will after a transition
  Owner m_owner = 0;                  ///< of `m_content`
  std::optional<Transition> m_transition;
  std::optional<Animation> m_animation;
  std::optional<Motion> m_motion;
  std::optional<Rerender> m_rerender;
  uint64_t m_rerenders = 0;
  uint64_t m_animations = 0;
  uint64_t m_motions = 0;
  std::optional<Wanted> m_wanted;
  std::vector<OnItsWay> m_on_their_way;
  FramePool m_effect_frames;
  Bands m_bands;
};

/// LUMAVIEW_KEN_BURNS: for how many milliseconds each still picture pans and zooms; 0 = it stands, the default.
Duration KenBurnsDuration();

}  // namespace sim::lumaview

#endif
