// SPDX-License-Identifier: Apache-2.0
/// The commands with lines or results of their own. Each bears the name of its command and is a row's `run`.
#ifndef HOST_COMMANDROWS_H
#define HOST_COMMANDROWS_H

#include "host/CommandTable.h"

namespace olm {

Outcome InitPlayer(const CommandCall& call);
Outcome Play(const CommandCall& call);
Outcome SetDisplayArea(const CommandCall& call);
Outcome GetPictureSize(const CommandCall& call);
Outcome GetPictureType(const CommandCall& call);
Outcome AddEventCallback(const CommandCall& call);
Outcome GetThumbnail(const CommandCall& call);
Outcome GetZoomRatio(const CommandCall& call);
Outcome IsTransitionEffectAvailable(const CommandCall& call);
Outcome GetTransitionEffectList(const CommandCall& call);
Outcome ClearScreenForImage(const CommandCall& call);
Outcome ClearScreen(const CommandCall& call);
Outcome GetVideoResolution(const CommandCall& call);
Outcome SetPlayerProperty(const CommandCall& call);

}  // namespace olm

#endif
