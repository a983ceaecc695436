// SPDX-License-Identifier: Apache-2.0
/// The application framework of the television (libOlmEmp, libOlmCommon), as far as the engine meets it.
///
/// A binary contract: the library was compiled elsewhere, so the order of virtual operations, the order and types of
/// fields and every argument type below are relied on. New members may only be added by the framework's own makers.
#ifndef PLATFORM_OLM_EMP_H
#define PLATFORM_OLM_EMP_H

#include <string>
#include <vector>

#define OLM_EXPORT __attribute__((visibility("default")))

namespace olm {

class CEmpEngineBase;

/// Kinds of engine that an application may close; the engine only passes the value on.
struct EmpType {
  enum type : int { E_EMP_UNKNOWN = 0 };
};

/// What `CEmpEngineBase::GetAppInfo` can be asked.
enum eAPP_INFO_TYPE : int {
  E_APP_INFO_DESKTOP_ID = 0,  ///< a decimal number; the engine fetches it and does not use it
  E_APP_INFO_APP_ID = 1,      ///< the application's id
  E_APP_INFO_WIDGET_ID = 2,   ///< the widget id, "name.suffix"
};

/// Text parameters addressed by position, counted from 0.
class OLM_EXPORT ParamList {
 public:
  ParamList() = default;

  void push_back(const std::string& text) { m_texts.push_back(text); }

  /// The text at `position`; an empty one where there is none.
  std::string operator[](unsigned int position) const {
    return position < m_texts.size() ? m_texts[position] : std::string();
  }

  unsigned int size() const { return static_cast<unsigned int>(m_texts.size()); }

 private:
  std::vector<std::string> m_texts;
};

/// The object through which the framework reaches one player. Owned by the framework, deleted through its destructor.
/// Commands may arrive on any thread.
class OLM_EXPORT CEmpEngineBase {
 public:
  CEmpEngineBase();

  // Slot order: 1 and 2 are the destructor's.
  virtual ~CEmpEngineBase();
  virtual bool Execute(std::string& result, const std::string& command, const std::string& param1,
                       const std::string& param2, const std::string& param3, const std::string& param4);        // 3
  virtual bool ExecuteWithParamList(std::string& result, const std::string& command, const ParamList& params);  // 4
  virtual void Destroy();                                                                                       // 5
  virtual void SetAppInfo(int desktopId, std::string appId, std::string widgetId, std::string reserved);        // 6

  std::string GetAppInfo(eAPP_INFO_TYPE type);

  /// Each writes the command's one result into `result`, in the framework's own textual form.
  void SetReturnValueASCII(std::string& result, const char* text);
  void SetReturnValueASCII(std::string& result, std::string& text);
  void SetReturnValueInteger(std::string& result, int value);

  /// Sends one event to the application. Thread-safe, never blocks, takes no lock of the engine's.
  void SendEvent(int event, std::string param1, std::string param2);

 private:
  int m_iDesktopId;
  std::string m_strAppId;
  std::string m_strWidgetId;
};

/// The process's one application object; owned by the framework from `EmpMain` on.
class OLM_EXPORT CEmpAppBase {
 public:
  CEmpAppBase();

  // Slot order: 1 and 2 are the destructor's.
  virtual ~CEmpAppBase();
  virtual bool Open(const std::string& appId, const std::string& widgetId, const std::string& param1,
                    const std::string& param2);                      // 3
  virtual bool Close(const std::string& appId, EmpType::type type);  // 4
  virtual bool Execute(std::string& result, const std::string& appId, const std::string& command,
                       const std::string& param1, const std::string& param2, const std::string& param3,
                       const std::string& param4);  // 5
  virtual bool ExecuteWithParamList(std::string& result, const std::string& appId, const std::string& command,
                                    const ParamList& params);  // 6
  virtual void Destroy();                                      // 7
  virtual bool Open(int handle, const std::string& appId, const std::string& widgetId,
                    const std::string& param);  // 8
  virtual bool Close(int handle);               // 9
  virtual bool Execute(std::string& result, int handle, const std::string& command, const std::string& param1,
                       const std::string& param2, const std::string& param3, const std::string& param4);  // 10
  virtual bool ExecuteWithParamList(std::string& result, int handle, const std::string& command,
                                    const ParamList& params);  // 11
  /// Called once by `EmpMain`; what it returns belongs to the framework.
  virtual CEmpEngineBase* CreateEmpEngine();     // 12
  virtual void OnAppEvent(std::string text);     // 13
  virtual void OnSystemEvent(std::string text);  // 14

 protected:
  // Filled by the derived class's constructor; `m_iReserved` stands between the third and the fourth and is left as
  // the base constructor sets it.
  std::string m_strEngineName;
  std::string m_strEngineId;
  std::string m_strVersion;
  int m_iReserved;
  std::string m_strEngineType;
};

/// Runs the process for `app` until it is to end; returns the exit status. Asks `app` for the engine before it starts
/// a thread of its own, and delivers commands one at a time on the thread that called it.
OLM_EXPORT int EmpMain(int argc, char** argv, CEmpAppBase* app);

/// The framework's log (libOlmCommon).
class OLM_EXPORT COLMDebug {
 public:
  /// Writes one formatted piece of a log line. Thread-safe.
  /// `module`: the engine is 2. `level`: 0 plain, 1 errors and traces, 2 enter / leave and warnings, 4 information.
  static void PrintLog(unsigned int module, unsigned int level, const char* format, ...)
      __attribute__((format(printf, 3, 4)));
};

}  // namespace olm

#endif
