// SPDX-License-Identifier: Apache-2.0
/// An exported entry point: a subtitle notification becomes event 0 for the application.
#include <locale>
#include <sstream>

#include "adapter/PictureLog.h"
#include "host/CEmpEnginePicture.h"

namespace olm {
namespace {

constexpr int kSubtitleEvent = 0;

}  // namespace

void CEmpEnginePicture::SubtitleTextCallback(unsigned short* code, char* text, int*, int*, int*) {
  const Operation op{__FUNCTION__};
  if (text == nullptr || code == nullptr) {
    LOG_BLUE(op, "Subtitle give the NULL info, return \n");
    return;
  }
  std::ostringstream number;
  number.imbue(std::locale::classic());
  number << *code;
  m_pEngine->SendEvent(kSubtitleEvent, number.str(), text);
}

}  // namespace olm
