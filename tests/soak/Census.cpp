// SPDX-License-Identifier: Apache-2.0
#include "tests/soak/Census.h"

#include <xcb/res.h>
#include <xcb/xcb.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <string_view>

namespace soak {
namespace {

namespace fs = std::filesystem;

struct Freed {
  void operator()(void* reply) const { std::free(reply); }
};

/// Of a process that ends meanwhile: those that were seen.
std::vector<fs::path> EntriesOf(const fs::path& folder) {
  std::vector<fs::path> entries;
  std::error_code gone;
  for (fs::directory_iterator at(folder, gone); !gone && at != fs::directory_iterator(); at.increment(gone)) {
    entries.push_back(at->path());
  }
  return entries;
}

/// `pid` and all below it; a decoder's process may end while it is looked at.
std::vector<pid_t> FamilyOf(pid_t pid) {
  std::vector<pid_t> family{pid};
  for (size_t at = 0; at < family.size(); ++at) {
    const fs::path tasks = "/proc/" + std::to_string(family[at]) + "/task";
    for (const fs::path& task : EntriesOf(tasks)) {
      std::ifstream children(task / "children");
      for (pid_t child; children >> child;) family.push_back(child);
    }
  }
  return family;
}

int64_t AnonymousBytes(const fs::path& process) {
  std::ifstream status(process / "status");
  for (std::string word; status >> word;) {
    int64_t kilobytes = 0;
    if (word == "RssAnon:" && status >> kilobytes) return kilobytes * 1024;
  }
  return 0;
}

int SharedMappings(const fs::path& process) {
  std::ifstream maps(process / "maps");
  int count = 0;
  for (std::string line; std::getline(maps, line);) {
    count += line.find("/memfd:") != std::string::npos || line.find("/SYSV") != std::string::npos ? 1 : 0;
  }
  return count;
}

class Server {
 public:
  Server() : m_connection(xcb_connect(nullptr, nullptr)) {
    if (xcb_connection_has_error(m_connection) != 0) throw std::runtime_error("no X server to look at");
  }
  ~Server() { xcb_disconnect(m_connection); }
  Server(const Server&) = delete;
  Server& operator=(const Server&) = delete;

  int Resources() {
    using Clients = std::unique_ptr<xcb_res_query_clients_reply_t, Freed>;
    using Resources = std::unique_ptr<xcb_res_query_client_resources_reply_t, Freed>;
    const Clients clients(xcb_res_query_clients_reply(m_connection, xcb_res_query_clients(m_connection), nullptr));
    int count = 0;
    for (auto client = xcb_res_query_clients_clients_iterator(clients.get()); client.rem > 0;
         xcb_res_client_next(&client)) {
      const auto cookie = xcb_res_query_client_resources(m_connection, client.data->resource_base);
      const Resources held(xcb_res_query_client_resources_reply(m_connection, cookie, nullptr));
      if (held == nullptr) continue;
      for (auto type = xcb_res_query_client_resources_types_iterator(held.get()); type.rem > 0;
           xcb_res_type_next(&type)) {
        count += static_cast<int>(type.data->count);
      }
    }
    return count;
  }

 private:
  xcb_connection_t* const m_connection;
};

/// "socket:[1234]" is "socket:[]". A full log is put away as "log.1", by each who writes it in its own time.
std::string KindOf(std::string target) {
  constexpr std::string_view kLog = "/log";
  if (const size_t put_away = target.find("/log.1"); put_away != std::string::npos)
    target.resize(put_away + kLog.size());
  std::erase_if(target, [](char c) { return c >= '0' && c <= '9'; });
  return target;
}

int Total(const std::map<std::string, int>& counts) {
  int total = 0;
  for (const auto& [kind, count] : counts) total += count;
  return total;
}

}  // namespace

bool Census::HoldsTheSameAs(const Census& other) const {
  return processes == other.processes && threads == other.threads && descriptors == other.descriptors &&
         shared_mappings == other.shared_mappings && x_resources == other.x_resources;
}

std::string Census::Text() const {
  return std::to_string(anonymous_bytes >> 10) + " kB anonymous, " + std::to_string(processes) + " processes, " +
         std::to_string(threads) + " threads, " + std::to_string(Total(descriptors)) + " descriptors, " +
         std::to_string(shared_mappings) + " shared mappings, " + std::to_string(x_resources) + " X resources";
}

std::string DescriptorChanges(const Census& before, const Census& now) {
  std::map<std::string, int> changes = now.descriptors;
  for (const auto& [kind, count] : before.descriptors) changes[kind] -= count;
  std::string text;
  for (const auto& [kind, change] : changes) {
    if (change != 0) text += " " + std::string(change > 0 ? "+" : "") + std::to_string(change) + " " + kind;
  }
  return text;
}

Census Take(pid_t pid) {
  Census census;
  for (const pid_t member : FamilyOf(pid)) {
    const fs::path process = "/proc/" + std::to_string(member);
    ++census.processes;
    census.anonymous_bytes += AnonymousBytes(process);
    census.threads += static_cast<int>(EntriesOf(process / "task").size());
    for (const fs::path& entry : EntriesOf(process / "fd")) {
      std::error_code gone;
      const fs::path target = fs::read_symlink(entry, gone);
      if (!gone) ++census.descriptors[KindOf(target)];
    }
    census.shared_mappings += SharedMappings(process);
  }
  static Server server;
  census.x_resources = server.Resources();
  return census;
}

double MedianSlope(const std::vector<double>& steps, const std::vector<double>& values) {
  std::vector<double> slopes;
  for (size_t to = 0; to < steps.size(); ++to) {
    for (size_t from = 0; from < to; ++from) slopes.push_back((values[to] - values[from]) / (steps[to] - steps[from]));
  }
  if (slopes.empty()) return 0;
  std::nth_element(slopes.begin(), slopes.begin() + static_cast<std::ptrdiff_t>(slopes.size() / 2), slopes.end());
  return slopes[slopes.size() / 2];
}

}  // namespace soak
