// SPDX-License-Identifier: Apache-2.0
/// The one object that shows pictures through the picture library. Its operations are divided by concern:
/// adapter/ worker, loading, events, effects, view controls and queries; display/ the window and its place on the
/// screen; lifecycle/ the application's identity, its state key, pause, resume and destroy.
#ifndef ADAPTER_CPICTUREADAPTER_H
#define ADAPTER_CPICTUREADAPTER_H

#include <X11/Xlib.h>
#include <pthread.h>

#include <atomic>
#include <memory>
#include <mutex>
#include <string>

#include "platform/lumaview.h"
#include "platform/vconf.h"

typedef struct _GMainLoop GMainLoop;

namespace olm {

class CEmpEnginePicture;
struct Operation;

/// Events that the application receives; the three that are sent have names.
enum E_PHOTO_PLAYER_EVENT : int {
  RENDER_ERROR = 6,
  RENDER_COMPLETED = 8,
  DECODE_COMPLETED = 10,
};
inline constexpr unsigned int kHighestEvent = 11;

enum E_PHOTO_PLAYER_RESULT : int {
  PHOTO_PLAYER_RESULT_SUCCESS = 12,
  PHOTO_PLAYER_RESULT_ERROR = 13,
};

using PhotoPlayerEventCallback = int (*)(E_PHOTO_PLAYER_EVENT, E_PHOTO_PLAYER_RESULT, void*);

inline constexpr Window kNoWindow = static_cast<Window>(-1);
inline constexpr int kUrlCapacity = 500;         ///< bytes of `m_cURL`, the terminating NUL among them
inline constexpr int kEffectListCapacity = 400;  ///< bytes that the library may fill, perhaps without a NUL
inline constexpr int kDefaultWindowWidth = 1920;
inline constexpr int kDefaultWindowHeight = 1080;
inline constexpr int kCreateEffectType = 36;  ///< with which every effect object is made

/// Operations return 1 for success and 0 for failure unless they say otherwise. Nothing is rolled back: an operation
/// that fails half-way keeps what it had made, and the releasing operations release whatever exists.
///
/// Commands call from any thread, one at a time (the engine's mutex). Key notifications call `AppNotifyCB` on the
/// worker, one at a time. The library calls the On...EventCB members on its reporting thread; these take no lock.
class CPictureAdapter {
 public:
  /// `pEngine`: the owner, which receives the events; may be null in tests.
  explicit CPictureAdapter(CEmpEnginePicture* pEngine);
  /// Releases everything. No key notification may be running or come any more, unless it is the caller.
  ~CPictureAdapter();
  CPictureAdapter(const CPictureAdapter&) = delete;
  CPictureAdapter& operator=(const CPictureAdapter&) = delete;

  /// Body of the worker: runs a main loop on the process's default context. `adapter` is not touched once its
  /// `m_pMainLoop` is stored. Returns null.
  static void* picture_thread_func(void* adapter);

  // Loading and playback (adapter/Loading.cpp)
  int InitPlayer(const char* pURL);
  int StartPlayback(unsigned int sec);
  int Play(const char* pURL, unsigned int sec);
  int Stop();
  int ChangePlayingURL(const char* pURL);
  void DecodePicture(_lumaview_s* picture);
  /// The type of the file at `url`, which may not be null; 5 when it cannot be read.
  picture_type_e ParsePictureType(char* url);

  // Events (adapter/Events.cpp)
  int AddEventCallback(PhotoPlayerEventCallback callback);
  int PostMessage(E_PHOTO_PLAYER_EVENT event, E_PHOTO_PLAYER_RESULT result);
  static int OnParseEventCB(void* object, lumaview_event_type_e type, lumaview_event_result_e result);
  static int OnDecodeEventCB(void* object, lumaview_event_type_e type, lumaview_event_result_e result);
  static int OnEffectEventCB(void* object, lumaview_event_type_e type, lumaview_event_result_e result);

  // Transition effects and slide show (adapter/Effects.cpp)
  int EffectShow(effect_type_e type);
  /// -2 stands for 36, the library's choice.
  int SetTransitionEffect(int type);
  int IsTransitionEffectAvailable();
  /// `*list`: the caller's buffer of at least 400 bytes; it may come back without a terminating NUL.
  int GetTransitionEffectList(char** list);
  int SetSlideShowStatus(bool slideShow);

  // View controls (adapter/ViewControls.cpp); numbers go to the library unchecked
  int SetZoomMove(lumaview_key_direction_e direction);
  int SetZoomRatio(int ratio);
  int SetRotation(int rotation, bool flag);
  int SetDisplayLock(bool lock);
  int SetPlayerProperty(int propertyType, const char* param1, int param2);

  // Queries (adapter/Queries.cpp)
  int GetPictureSize(int* width, int* height);
  int GetPictureType(picture_type_e* type);
  int GetVideoResolution(unsigned int* pWidth, unsigned int* pHeight);
  int GetThumbnail(_lumaview_thumbnail_s* thumbnail);
  int GetZoomRatio(int* ratio);

  // The window (display/DisplayWindow.cpp, made in WindowCreation.cpp), in screen pixels
  int InitWindow(int x, int y, int width, int height);
  int CreateWindow(Display* display, int x, int y, int width, int height);
  int ResizeWindow(int x, int y, int width, int height);
  int make_transparent_image(Display* display, int width, int height);
  int DestroyDisplayWin();
  int CloseDisplay();
  int GetScreenSize(int* pWidth, int* pHeight);

  // The window's place on the screen (display/DisplayArea.cpp)
  /// The rectangle is in the application's layout, which is `baseRes` lines high.
  int SetDisplayArea(int x, int y, int width, int height, int baseRes, bool bAutoResume);
  int ClearScreen();
  int ClearScreenForImage();

  // The application's identity and state (lifecycle/)
  void SetAppID(int taskID, std::string appID, std::string widgetID);
  int RegisterVconfKeys();
  int UnregisterVconfKeys();
  /// `userData`: the engine. A "destroy" deletes the engine's adapter before this returns.
  static void AppNotifyCB(keynode_t* key, void* userData);
  int AppPause();
  int AppResume();
  int AppDestroy();

  // The state of one adapter, in a fixed order.
  CEmpEnginePicture* m_pEmpEngine;          ///< the owner
  _lumaview_s* m_pPicture;                  ///< the picture being shown; null = none
  pthread_t m_thread_id;                    ///< the worker; 0 = none
  GMainLoop* m_pMainLoop;                   ///< the worker's, stored by the worker
  _lumaview_effect_s* m_pTransitionEffect;  ///< null = none
  char m_cURL[kUrlCapacity];                ///< the current picture's path; empty = no picture is loaded
  Display* m_pDisplay;                      ///< this adapter's connection; null = none
  Window m_cWin;                            ///< all bits set = none
  GC m_GC;                                  ///< of the window; stale once the connection is closed
  XImage* m_pImage;                         ///< all-zero picture of the window's size; stale likewise
  bool m_bInitWindow;                       ///< this adapter has made or joined the window
  bool m_bInitDisplay;                      ///< this adapter initialised the library's display on the window
  bool m_bSlideShow;                        ///< recorded only
  bool m_bVconfRegistered;                  ///< the state key is followed
  int m_iScreenWidth;                       ///< pixels; 0 = not known yet
  int m_iScreenHeight;                      ///< pixels; 0 = not known yet
  int m_i3DSetting;                         ///< for the next picture
  bool m_b3DSettingChanged;                 ///< `m_i3DSetting` waits to be applied
  int m_taskID;                             ///< also the window that launched the application; 0 = not set
  std::string m_strAppID;
  std::string m_strAppName;                   ///< the widget id
  std::string m_strAppShortName;              ///< the widget id up to its first dot
  std::string m_strVconfKey;                  ///< the key that is, or was last, followed
  PhotoPlayerEventCallback m_pEventCallback;  ///< stored only: it may point into a text that is gone
  pthread_mutex_t m_AdapterMut;               ///< held by Stop, EffectShow, AppPause and AppDestroy

  // The one window that all adapters of the process share.
  static Display* pDisplay;     ///< declared by contract, used by nothing
  static Window window_id;      ///< all bits set = none
  static int displayNum;        ///< declared by contract, used by nothing
  static int winNum;            ///< adapters that hold the window
  static int lumaviewInitFlag;  ///< 1 while some adapter has the library's display initialised

 private:
  friend struct AdapterProbe;  ///< the tests' view of what follows

  using FieldLock = std::lock_guard<std::recursive_mutex>;

  // The worker (adapter/Worker.cpp)
  /// Shared by `StartWorker` and the worker that it starts; outlives the adapter in the worker's hands.
  struct WorkerStart {
    std::atomic<bool> ended{false};
  };
  /// Starts a worker and waits until its loop runs, so that no later quit is lost.
  void StartWorker();
  /// Tells the worker's loop to quit and lets the thread go; it ends by itself.
  void LetWorkerGo();
  /// Tells the worker's loop to quit and waits until the thread has ended.
  void JoinWorker();

  // Steps that several operations share; their lines bear the operation's name (adapter/Steps.cpp)
  int EnsureDefaultWindow(const Operation& operation);
  int EnsureTransitionEffect(const Operation& operation);
  void LogDisplayState(const Operation& operation) const;
  bool NeedsLibraryDisplay() const { return !m_bInitDisplay && StaticInitDisplay() == 1; }
  int EnsureLibraryDisplay(const Operation& operation);
  int InitLibraryDisplay(const Operation& operation);
  void NoteLibraryDisplayDestroyed(const Operation& operation, int iFunRet);
  void StaticSetDisplayFlag(const Operation& operation, bool initialised);
  /// 1 while no adapter of the process has initialised the library's display.
  static int StaticInitDisplay();
  int ReleasePicture();
  int ReleaseTransitionEffect();
  void ReleaseEffectTraced(const Operation& operation);
  /// The library's display, the window and the connection, where there are a connection and a window.
  void ReleaseWindow(const Operation& operation);
  void SetPictureUserData();
  void SetPictureFlag();
  void RegisterParseCallback();
  int StartParsing(const Operation& operation);
  /// True while a picture is loaded. Takes the field lock.
  bool HasUrl() const;
  void StoreUrl(const char* url);
  void ClearUrl();

  int PreparePicture(const Operation& operation, const char* path);
  int ReleaseAll(const Operation& operation);
  int RunEffect(const Operation& operation, effect_type_e type);
  void ReleaseForPause(const Operation& operation);
  void ReleaseForDestroy(const Operation& operation);

  // The shared window (display/DisplayWindow.cpp)
  bool Connect(const Operation& operation);
  static Window StaticGetWindow(const Operation& operation);
  void StaticSetWindow(const Operation& operation) const;
  /// True when the last holder has let go and the window is to be destroyed.
  static bool StaticDestroyWindow();
  void FullScreen(const Operation& operation, int* width, int* height);
  void ReleaseGC();
  void ReleaseImage();

  /// Innermost of all locks: guards the fields where a command and a notification meet. Never held while another lock
  /// is taken, never taken in a library callback, not held when the adapter is deleted.
  mutable std::recursive_mutex m_fields;
  /// Of the worker started last.
  std::shared_ptr<WorkerStart> m_workerStart = std::make_shared<WorkerStart>();
  Window m_madeWindow = kNoWindow;  ///< made on this adapter's present connection
  bool m_bOwnsGC = false;           ///< `m_GC` lives on the present connection
  bool m_bOwnsImage = false;        ///< `m_pImage` is not stale
};

}  // namespace olm

#endif
