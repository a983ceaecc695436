// SPDX-License-Identifier: Apache-2.0
/// The tests' view of an adapter's private members.
#ifndef TESTS_KIT_ADAPTERPROBE_H
#define TESTS_KIT_ADAPTERPROBE_H

#include "adapter/CPictureAdapter.h"

namespace olm {

struct AdapterProbe {
  /// The window made on the adapter's present connection; kNoWindow = none.
  static Window MadeWindow(const CPictureAdapter& adapter) { return adapter.m_madeWindow; }
  static bool OwnsGC(const CPictureAdapter& adapter) { return adapter.m_bOwnsGC; }
  static bool OwnsImage(const CPictureAdapter& adapter) { return adapter.m_bOwnsImage; }
  static std::recursive_mutex& Fields(const CPictureAdapter& adapter) { return adapter.m_fields; }
};

}  // namespace olm

namespace kit {
using olm::AdapterProbe;
}

#endif
