// SPDX-License-Identifier: Apache-2.0
#include "simulator/framework/EndSignalSource.h"

#include <glib-unix.h>

#include <utility>

namespace sim::framework {

EndSignalSource::EndSignalSource(GMainContext* context, std::function<void()> onSignal)
    : m_onSignal(std::move(onSignal)), m_source(g_unix_fd_source_new(m_signals.Descriptor(), G_IO_IN)) {
  g_source_set_priority(m_source, G_PRIORITY_HIGH);
  g_source_set_callback(m_source, G_SOURCE_FUNC(OnReadable), this, nullptr);
  g_source_attach(m_source, context);
}

EndSignalSource::~EndSignalSource() {
  g_source_destroy(m_source);
  g_source_unref(m_source);
}

gboolean EndSignalSource::OnReadable(gint, GIOCondition, gpointer self) {
  const auto* own = static_cast<EndSignalSource*>(self);
  if (own->m_signals.Take()) {
    own->m_onSignal();
  }
  return G_SOURCE_CONTINUE;
}

}  // namespace sim::framework
