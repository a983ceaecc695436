// SPDX-License-Identifier: Apache-2.0
#include "simulator/lumaview/cage/Cage.h"

#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <filesystem>
#include <iterator>
#include <utility>

#include "simulator/base/Log.h"
#include "simulator/lumaview/cage/Bars.h"
#include "simulator/lumaview/cage/CageFinding.h"
#include "simulator/lumaview/cage/Message.h"
#include "simulator/lumaview/decode/Formats.h"
#include "simulator/lumaview/image/Colour.h"

namespace sim::lumaview {
namespace {

using cage::Message;
using cage::Verb;

/// What most pictures need, loaded before the first one comes.
constexpr const char* kFirstModules[] = {"jpeg", "png", kColourModule};

bool HasOneThread() {
  std::error_code error;
  const std::filesystem::directory_iterator tasks("/proc/self/task", error);
  return !error && std::distance(begin(tasks), end(tasks)) == 1;
}

/// The modules of all formats that a file with this beginning may have.
std::set<std::string> ModulesFor(int file) {
  std::array<uint8_t, kProbeBytes> head{};
  ssize_t got = -1;
  do {
    got = pread(file, head.data(), head.size(), 0);
  } while (got < 0 && errno == EINTR);
  std::set<std::string> modules;
  for (const Format& format : GetFormats()) {
    if (got > 0 && format.module != nullptr && format.probe({head.data(), static_cast<size_t>(got)})) {
      modules.insert(format.module);
    }
  }
  return modules;
}

/// The nursery has said that the child behind `channel` is gone, or is gone itself.
bool IsDead(const UniqueFd& channel) {
  pollfd looked{channel.Get(), POLLIN, 0};
  return poll(&looked, 1, 0) != 0;  // a child that nobody has asked anything says nothing
}

std::unique_ptr<Cage>& TheCage() {
  static auto* const cage = new std::unique_ptr<Cage>;  // outlives every thread
  return *cage;
}

}  // namespace

Result<std::unique_ptr<Cage>> Cage::Start() {
  if (!HasOneThread()) {
    return Error{kNotReady, "threads run already; lumaview_pre_loading is to be called before them"};
  }
  GetLimits();  // read, and complained about, where there is a log
  auto nursery = cage::StartNursery();
  if (!nursery) {
    return nursery.error();
  }
  std::unique_ptr<Cage> started(new Cage(std::move(*nursery)));
  started->m_modules.insert(std::begin(kFirstModules), std::end(kFirstModules));
  started->Warm();
  return started;
}

Cage::~Cage() {
  m_warm.Reset();
  m_nursery.channel.Reset();
  while (waitpid(m_nursery.keeper, nullptr, 0) < 0 && errno == EINTR) {
  }
}

Result<UniqueFd> Cage::Take(int file) {
  const std::set<std::string> needed = ModulesFor(file);
  const std::lock_guard lock(m_mutex);
  const size_t before = m_modules.size();
  m_modules.insert(needed.begin(), needed.end());
  if (m_modules.size() != before || IsDead(m_warm)) {
    m_warm.Reset();
  }
  return m_warm ? Result<UniqueFd>(std::move(m_warm)) : Spawn();
}

void Cage::Warm() {
  const std::lock_guard lock(m_mutex);
  if (!m_warm) {
    if (auto warm = Spawn()) {
      m_warm = std::move(*warm);
    }
  }
}

bool Cage::IsUp() const {
  const std::lock_guard lock(m_mutex);
  return !m_lost;
}

Result<UniqueFd> Cage::Spawn() {
  auto channel = cage::CreateChannel();
  if (!channel) {
    return channel.error();
  }
  Message request{.verb = Verb::kSpawn};
  std::string modules;
  for (const std::string& module : m_modules) {
    modules += module + ' ';
  }
  request.SetText(modules);
  if (!cage::Send(m_nursery.channel.Get(), request, channel->theirs.Get())) {
    m_lost = m_lost || errno == EPIPE || errno == ECONNRESET;
    return Error{kNotReady, "the decoders' processes do not answer"};
  }
  return std::move(channel->ours);
}

void Cage::NoteBars(uint32_t bars) {
  const std::lock_guard lock(m_mutex);
  if (std::exchange(m_logged, true)) {
    return;
  }
  const bool whole = bars == cage::kAllBars;
  Log(whole ? LogLevel::kInfo : LogLevel::kWarning, "lumaview",
      "pictures are decoded in processes of their own: " + cage::DescribeBars(bars));
}

Cage* GetCage() {
  return TheCage().get();
}

void StartCage() {
  static bool started = false;
  if (std::exchange(started, true)) {
    return;
  }
  if (const char* reason = ReasonAgainstCage(); reason != nullptr) {
    Log(LogLevel::kInfo, "lumaview", std::string("pictures are decoded in this process: ") + reason);
    return;
  }
  auto cage = Cage::Start();
  if (!cage) {
    Log(LogLevel::kWarning, "lumaview", "pictures are decoded in this process: " + cage.error().reason);
    return;
  }
  TheCage() = std::move(*cage);
}

void StopCage() {
  TheCage().reset();
}

}  // namespace sim::lumaview
