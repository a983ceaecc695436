// SPDX-License-Identifier: Apache-2.0
/// Lives of an engine that together reach every place from which it calls out.
#ifndef TESTS_ENGINE_FAULTSCENARIOS_H
#define TESTS_ENGINE_FAULTSCENARIOS_H

#include <functional>
#include <memory>
#include <vector>

#include "tests/kit/Kit.h"

namespace faults {

using Step = std::function<void(olm::CEmpEnginePicture&)>;

/// The engine is made, the steps follow one another whatever they answer, and the engine is deleted. The expected
/// sequences are in golden/Fault-NAME.txt.
struct Scenario {
  const char* name;
  std::vector<Step> steps;
};

/// Load, show, place, clear, change and stop pictures.
Scenario Playing();
/// Show a picture with effects.
Scenario Effects();
/// Pause, resume and destroy.
Scenario Lifecycle();
/// Controls and queries of a shown picture, which then is still there when the engine is deleted.
Scenario Views();

/// Lives through the scenario. The journal shows what happened, and after each step what the fields hold.
void LiveThrough(const Scenario& scenario);

}  // namespace faults

#endif
