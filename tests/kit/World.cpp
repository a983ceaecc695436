// SPDX-License-Identifier: Apache-2.0
#include "tests/kit/World.h"

#include "tests/kit/Names.h"
#include "tests/kit/Script.h"

namespace kit {

World& world() {
  static auto& world = *new World;  // never destroyed: what is called while the process ends asks for it too
  return world;
}

void ResetWorld() {
  world() = World();
  ResetScript();
  ResetLumaview();
  ResetVconf();
  ResetXlib();
  ResetGlib();
  ForgetHandles();
}

}  // namespace kit
