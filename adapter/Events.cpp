// SPDX-License-Identifier: Apache-2.0
/// From the library's reports to the next step or to the application. The callbacks run on the library's reporting
/// thread and take no lock: destroying a picture waits for them.
#include "adapter/CPictureAdapter.h"
#include "adapter/PictureLog.h"
#include "host/CEmpEnginePicture.h"

namespace olm {
namespace {

/// The adapter that a record carries; null after a line that says what is missing.
template <typename Record>
CPictureAdapter* AdapterOf(const Operation& op, Record* record) {
  if (record == nullptr) {
    LOG_RED(op, "NULL == picture_object");
    return nullptr;
  }
  auto* pThis = static_cast<CPictureAdapter*>(std::atomic_ref(record->user_data).load());
  if (pThis == nullptr) {
    LOG_RED(op, "pThis == NULL");
  }
  return pThis;
}

}  // namespace

int CPictureAdapter::AddEventCallback(PhotoPlayerEventCallback callback) {
  const Operation op{__FUNCTION__};
  const FieldLock fields(m_fields);
  LOG_ENTER(op);
  m_pEventCallback = callback;
  LOG_LEAVE(op);
  return 1;
}

int CPictureAdapter::PostMessage(E_PHOTO_PLAYER_EVENT event, E_PHOTO_PLAYER_RESULT) {
  const Operation op{__FUNCTION__};
  LOG_ENTER(op);
  if (static_cast<unsigned int>(event) > kHighestEvent) {
    LOG_RED(op, "eEventType = %d, it is not available.\n", event);
    return 0;
  }
  if (m_pEmpEngine == nullptr) {
    LOG_RED(op, "m_pEmpEngine is NULL!!!\n");
    return 0;
  }
  switch (event) {
    case RENDER_COMPLETED:
      m_pEmpEngine->SendEvent(event, "", "");
      LOG_BLUE(op, "Send RENDER_COMPLETED event\n");
      break;
    case DECODE_COMPLETED:
      m_pEmpEngine->SendEvent(event, "", "");
      LOG_BLUE(op, "Send DECODE_COMPLETED event\n");
      break;
    case RENDER_ERROR:
      m_pEmpEngine->SendEvent(event, "", "");
      LOG_BLUE(op, "Send RENDER_ERROR event\n");
      break;
    default:
      LOG_RED(op, "eEventType = %d, it is not supported.\n", event);
  }
  LOG_LEAVE(op);
  return 1;
}

int CPictureAdapter::OnParseEventCB(void* object, lumaview_event_type_e type, lumaview_event_result_e result) {
  const Operation op{__FUNCTION__};
  LOG_BLUE(op, "CPictureAdapter::OnParseEventCB event_type = %d, result_code = %d", type, result);
  auto* picture = static_cast<_lumaview_s*>(object);
  CPictureAdapter* pThis = AdapterOf(op, picture);
  if (pThis == nullptr) {
    return 0;
  }
  if (result == LUMAVIEW_RESULT_PARSE_OK) {
    pThis->DecodePicture(picture);
  } else {
    LOG_RED(op, "OnParseEventCB got ERROR code, send render error event!!! result_code = 0x%x", Hex32(result));
    pThis->PostMessage(RENDER_ERROR, PHOTO_PLAYER_RESULT_ERROR);
  }
  return 0;
}

int CPictureAdapter::OnDecodeEventCB(void* object, lumaview_event_type_e type, lumaview_event_result_e result) {
  const Operation op{__FUNCTION__};
  LOG_BLUE(op, "CPictureAdapter::OnDecodeEventCB event_type = %d, result_code = %d", type, result);
  CPictureAdapter* pThis = AdapterOf(op, static_cast<_lumaview_s*>(object));
  if (pThis == nullptr) {
    return 0;
  }
  if (result == LUMAVIEW_RESULT_DECODE_OK) {
    pThis->PostMessage(DECODE_COMPLETED, PHOTO_PLAYER_RESULT_SUCCESS);
    pThis->PostMessage(RENDER_COMPLETED, PHOTO_PLAYER_RESULT_SUCCESS);
  } else {
    LOG_RED(op, "OnDecodeEventCB result_code = 0x%x", Hex32(result));
    pThis->PostMessage(RENDER_ERROR, PHOTO_PLAYER_RESULT_ERROR);
  }
  return 0;
}

int CPictureAdapter::OnEffectEventCB(void* object, lumaview_event_type_e type, lumaview_event_result_e result) {
  const Operation op{__FUNCTION__};
  LOG_BLUE(op, "CPictureAdapter::OnEffectEventCB event_type = %d, result_code = %d", type, result);
  CPictureAdapter* pThis = AdapterOf(op, static_cast<_lumaview_effect_s*>(object));
  if (pThis == nullptr) {
    return 0;
  }
  // A failed effect is reported like a finished one: the application goes on to its next picture.
  const E_PHOTO_PLAYER_RESULT outcome =
      result == LUMAVIEW_RESULT_EFFECT_OK ? PHOTO_PLAYER_RESULT_SUCCESS : PHOTO_PLAYER_RESULT_ERROR;
  pThis->PostMessage(DECODE_COMPLETED, outcome);
  pThis->PostMessage(RENDER_COMPLETED, outcome);
  return 0;
}

}  // namespace olm
