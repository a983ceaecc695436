// SPDX-License-Identifier: Apache-2.0
/// The one command with a parameter list: the display area in a layout whose height the caller names.
#include <algorithm>
#include <array>

#include "adapter/CPictureAdapter.h"
#include "adapter/PictureLog.h"
#include "host/CommandTable.h"

namespace olm {

bool CEmpEnginePicture::ExecuteWithParamList(std::string& result, const std::string& command, const ParamList& params) {
  const Operation op{__FUNCTION__};
  LOG_RED(op, "[picture-emp] ExecuteWithParamList(%s)", command.c_str());
  TRACED_LOCK(op, m_EngineMut);
  if (command != "SetDisplayArea") {
    return false;
  }
  const std::array<std::string, 5> texts{params[1], params[2], params[3], params[4], params[5]};
  if (std::ranges::any_of(texts, &std::string::empty)) {
    LOG_RED(op, "One of Parameter from 1 to 5 is not exist!\n");
    SetReturnValueInteger(result, 0);
    return true;
  }
  const int x = Number(texts[0]);
  const int y = Number(texts[1]);
  const int width = Number(texts[2]);
  const int height = Number(texts[3]);
  const int widgetHeight = Number(texts[4]);
  LOG_BLUE(op, "x: %d  y: %d  width: %d  height: %d widget height\n", x, y, width, height);
  if (m_pAdapter == nullptr) {
    LOG_RED(op, "Execute m_pAdapter == NULL\n");
    SetReturnValueInteger(result, 0);
    return true;
  }
  if (!m_pAdapter->SetDisplayArea(x, y, width, height, widgetHeight, true)) {
    LOG_RED(op, "SetDisplayArea by ExecuteWithParamList failed\n");
    SetReturnValueInteger(result, 0);
    return true;
  }
  SetReturnValueInteger(result, 1);
  return true;
}

}  // namespace olm
