// SPDX-License-Identifier: Apache-2.0
/// The process's entry: the local display, the application object, and the framework runs the rest.
#include <cstdlib>

#include "host/CEmpAppPicturePlayer.h"

int main(int argc, char** argv) {
  setenv("DISPLAY", ":0", 1);
  auto* app = new olm::CEmpAppPicturePlayer;  // the framework's for the life of the process
  return olm::EmpMain(argc, argv, app);
}
