// SPDX-License-Identifier: Apache-2.0
/// The framework's handle on one picture player: serialises commands, converts their texts, writes their results.
#ifndef HOST_CEMPENGINEPICTURE_H
#define HOST_CEMPENGINEPICTURE_H

#include <pthread.h>

#include "platform/olm_emp.h"

namespace olm {

class CPictureAdapter;

class CEmpEnginePicture : public CEmpEngineBase {
 public:
  CEmpEnginePicture();
  /// Key notifications have ended before.
  ~CEmpEnginePicture() override;
  CEmpEnginePicture(const CEmpEnginePicture&) = delete;
  CEmpEnginePicture& operator=(const CEmpEnginePicture&) = delete;

  /// Runs one of the 24 commands of host/CommandTable.cpp. False: not one of them, and `result` is untouched.
  bool Execute(std::string& result, const std::string& command, const std::string& strParam1,
               const std::string& strParam2, const std::string& strParam3, const std::string& strParam4) override;
  /// Runs "SetDisplayArea" with positions 1 to 5: x, y, width, height, height of the caller's layout. False: another
  /// command, and `result` is untouched.
  bool ExecuteWithParamList(std::string& result, const std::string& command, const ParamList& params) override;

  /// Releases and deletes the adapter; every later command answers 0. Called by the adapter's own key handler, which
  /// touches nothing of the adapter afterwards. Always true.
  bool AppDestroy();

  /// Null after `AppDestroy`.
  CPictureAdapter* GetAdapter() const;

  /// Sends event 0 with the number that `code` points at and the text. `code` and `text` may be null; the three others
  /// are not read. Any thread; the engine exists.
  OLM_EXPORT static void SubtitleTextCallback(unsigned short* code, char* text, int*, int*, int*);

  CPictureAdapter* m_pAdapter;  ///< owned; null = the application was destroyed
  pthread_mutex_t m_EngineMut;  ///< held for the whole of a command; taken before the adapter's
};

/// The engine of this process, set by its constructor.
OLM_EXPORT extern CEmpEnginePicture* m_pEngine;
/// Declared for the framework; nothing here reads or writes it.
OLM_EXPORT extern CEmpAppBase* m_pBase;

/// Successful "InitPlayer" and "Play" commands.
extern int s_initPlayerCount;
extern int s_playCount;

}  // namespace olm

#endif
