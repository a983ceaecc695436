// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_TVSIM_CONTROL_PROTOCOLDOCUMENT_H
#define SIMULATOR_TVSIM_CONTROL_PROTOCOLDOCUMENT_H

#include <string>

namespace sim::tvsim {

/// docs/protocol.md: the interface of a session in Markdown, made of the tables that serve it.
std::string ProtocolDocument();

}  // namespace sim::tvsim

#endif
