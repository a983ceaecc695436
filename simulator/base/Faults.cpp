// SPDX-License-Identifier: Apache-2.0
#include "simulator/base/Faults.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <charconv>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <mutex>
#include <sstream>
#include <thread>

#include "simulator/base/Log.h"
#include "simulator/base/UniqueFd.h"

namespace sim {
namespace {

constexpr size_t kMostRules = 64;
constexpr const char* kUsage =
    "a rule is written \"WHAT WHICH ACTION [VALUE]\": \"lumaview_parse 3 fail 7\", \"lumaview_decode 1 hang\", "
    "\"event:8 * drop\", \"event:10 1 delay 500ms\", \"store * fail\"";

/// How often each rule's call has come, shared by all processes.
using Counts = std::array<std::atomic<unsigned>, kMostRules>;
static_assert(std::atomic<unsigned>::is_always_lock_free);

std::string CountsOf(const std::string& file) {
  return file + ".counts";
}

template <typename Number>
bool ReadNumber(std::string_view text, Number& number) {
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  return error == std::errc() && end == text.data() + text.size();
}

bool ReadAction(const std::string& action, const std::string& value, Fault& fault) {
  if (action == "fail") {
    fault.action = FaultAction::kFail;
    return value.empty() || ReadNumber(value, fault.value);
  }
  if (action == "delay" && value.ends_with("ms")) {
    unsigned milliseconds = 0;
    fault.action = FaultAction::kDelay;
    const bool read = ReadNumber(std::string_view(value).substr(0, value.size() - 2), milliseconds);
    fault.delay = std::chrono::milliseconds(milliseconds);
    return read && milliseconds <= 600000;
  }
  fault.action = action == "hang" ? FaultAction::kHang : action == "drop" ? FaultAction::kDrop : FaultAction::kNone;
  return value.empty() && fault.action != FaultAction::kNone;
}

/// Events can be dropped, calls can fail or hang, either can be delayed.
bool Suits(const std::string& what, FaultAction action) {
  return action == FaultAction::kDelay || what.starts_with("event:") == (action == FaultAction::kDrop);
}

/// What a call does, for the log.
std::string DoingOf(const Fault& fault) {
  switch (fault.action) {
    case FaultAction::kHang:
      return "hangs";
    case FaultAction::kDelay:
      return "waits " + std::to_string(fault.delay.count()) + " ms first";
    default:
      return "fails";
  }
}

Counts* MapCounts(const std::string& file) {
  const UniqueFd counts(open(file.c_str(), O_RDWR | O_CLOEXEC));
  struct stat status {};
  if (!counts || fstat(counts.Get(), &status) != 0 || status.st_size != sizeof(Counts)) {
    return nullptr;
  }
  void* mapped = mmap(nullptr, sizeof(Counts), PROT_READ | PROT_WRITE, MAP_SHARED, counts.Get(), 0);
  return mapped == MAP_FAILED ? nullptr : static_cast<Counts*>(mapped);
}

bool WriteWhole(const std::string& path, std::string_view content) {
  const std::string unfinished = path + ".part";
  const UniqueFd file(open(unfinished.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600));
  return file && write(file.Get(), content.data(), content.size()) == static_cast<ssize_t>(content.size()) &&
         std::rename(unfinished.c_str(), path.c_str()) == 0;
}

/// The rules as they stand in the file now.
class Rules {
 public:
  explicit Rules(std::string file) : m_file(std::move(file)) {}

  Fault Next(std::string_view what) {
    const std::lock_guard lock(m_mutex);
    ReadWhereChanged();
    for (size_t i = 0; i < m_rules.size() && m_counts != nullptr; ++i) {
      if (m_rules[i].what == what) {
        const unsigned count = (*m_counts)[i].fetch_add(1) + 1;
        if (m_rules[i].which == 0 || m_rules[i].which == count) {
          return m_rules[i].fault;
        }
      }
    }
    return {};
  }

 private:
  /// Every change is a new file.
  void ReadWhereChanged() {
    struct stat status {};
    const bool exists = stat(m_file.c_str(), &status) == 0;
    const bool same = exists && status.st_ino == m_inode && status.st_mtim.tv_sec == m_time.tv_sec &&
                      status.st_mtim.tv_nsec == m_time.tv_nsec;
    if (same || (!exists && m_rules.empty())) {
      return;
    }
    m_inode = exists ? status.st_ino : 0;
    m_time = status.st_mtim;
    m_rules.clear();
    if (m_counts != nullptr) {
      munmap(m_counts, sizeof(Counts));
    }
    m_counts = MapCounts(CountsOf(m_file));
    std::ifstream stream(m_file);
    for (std::string line; std::getline(stream, line) && m_rules.size() < kMostRules;) {
      if (auto rule = ParseFaultRule(line)) {
        m_rules.push_back(std::move(*rule));
      }
    }
  }

  const std::string m_file;
  std::mutex m_mutex;
  ino_t m_inode = 0;
  timespec m_time{};
  std::vector<FaultRule> m_rules;
  Counts* m_counts = nullptr;
};

}  // namespace

Result<FaultRule> ParseFaultRule(const std::string& line) {
  std::istringstream stream(line);
  FaultRule rule;
  std::string which, action, value, more;
  stream >> rule.what >> which >> action >> value >> more;
  const bool counted = which == "*" || (ReadNumber(which, rule.which) && rule.which > 0);
  if (!counted || !more.empty() || !ReadAction(action, value, rule.fault) || !Suits(rule.what, rule.fault.action)) {
    return Error{EINVAL, "\"" + line + "\" is no fault; " + kUsage};
  }
  return rule;
}

Status WriteFaultRules(const std::string& file, const std::vector<std::string>& rules) {
  std::string text;
  if (rules.size() > kMostRules) {
    return Error{E2BIG, "at most " + std::to_string(kMostRules) + " faults at once"};
  }
  for (const std::string& rule : rules) {
    const auto parsed = ParseFaultRule(rule);
    if (!parsed) {
      return parsed.error();
    }
    text += rule + "\n";
  }
  // First the counts: whoever sees the new rules counts from nought.
  if (!WriteWhole(CountsOf(file), std::string(sizeof(Counts), '\0')) || !WriteWhole(file, text)) {
    return Error{errno, "cannot write " + file + ": " + std::strerror(errno)};
  }
  return Ok();
}

Fault NextFault(std::string_view what) {
  static Rules* const rules = [] {
    const char* file = std::getenv("OLM_FAULTS");
    return file != nullptr && *file != '\0' ? new Rules(file) : nullptr;
  }();
  return rules != nullptr ? rules->Next(what) : Fault{};
}

Fault NextFaultOfCall(std::string_view what) {
  const Fault fault = NextFault(what);
  if (fault.action != FaultAction::kNone) {
    Log(LogLevel::kWarning, "fault", std::string(what) + " " + DoingOf(fault));
  }
  std::this_thread::sleep_for(fault.delay);
  while (fault.action == FaultAction::kHang) {
    pause();
  }
  return fault;
}

}  // namespace sim
