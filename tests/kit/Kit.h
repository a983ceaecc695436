// SPDX-License-Identifier: Apache-2.0
/// Everything that a test of the engine includes.
#ifndef TESTS_KIT_KIT_H
#define TESTS_KIT_KIT_H

// Before Xlib, whose macro None is a name in GoogleTest.
#include <gtest/gtest.h>

#include "tests/kit/AdapterProbe.h"
#include "tests/kit/Domain.h"
#include "tests/kit/Golden.h"
#include "tests/kit/Journal.h"
#include "tests/kit/Script.h"
#include "tests/kit/Workers.h"
#include "tests/kit/World.h"

#endif
