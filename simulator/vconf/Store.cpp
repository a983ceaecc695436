// SPDX-License-Identifier: Apache-2.0
#include "simulator/vconf/include/Store.h"

#include <cerrno>
#include <cstdlib>
#include <map>
#include <utility>
#include <vector>

#include "simulator/base/Faults.h"
#include "simulator/vconf/StoreFile.h"

namespace sim::vconf {
namespace {

constexpr const char* kFileName = "store.log";

Status CheckText(std::string_view what, std::string_view text, size_t limit) {
  if (text.size() > limit) {
    return Error{EMSGSIZE, "a " + std::string(what) + " may have " + std::to_string(limit) + " bytes"};
  }
  if (text.find('\0') != std::string_view::npos) {
    return Error{EINVAL, "a " + std::string(what) + " may not hold a NUL"};
  }
  return Ok();
}

/// Calls `use` with every record of `file`.
template <typename Use>
Status ForEachRecord(const std::shared_ptr<StoreFile>& file, Use use) {
  RecordReader reader(file);
  for (;;) {
    auto record = reader.Next();
    if (!record) {
      return record.error();
    }
    if (!*record) {
      return Ok();
    }
    use(std::move(**record));
  }
}

/// The newest record of each key, in the order of the keys.
Result<std::vector<Record>> NewestRecords(const std::shared_ptr<StoreFile>& file) {
  std::map<std::string, Record> newest;
  SIM_TRY(ForEachRecord(file, [&](Record record) { newest.insert_or_assign(record.key, record); }));
  std::vector<Record> records;
  for (auto& [key, record] : newest) {
    records.push_back(std::move(record));
  }
  return records;
}

}  // namespace

Store::Store(std::shared_ptr<StoreFile> file) : m_file(std::move(file)) {}

Store::~Store() = default;

Result<std::filesystem::path> Store::SessionFolder() {
  const char* folder = std::getenv("VCONF_SESSION");
  if (folder == nullptr || *folder == '\0') {
    return Error{ENOENT, "there is no session; VCONF_SESSION has to name its folder"};
  }
  return std::filesystem::path(folder);
}

Result<std::unique_ptr<Store>> Store::Create(const std::filesystem::path& folder) {
  const auto old = StoreFile::Open(folder / kFileName);
  if (!old) {
    return old.error();
  }
  const auto records = NewestRecords(*old);
  if (!records) {
    return records.error();
  }
  SIM_TRY(StoreFile::Replace(folder / kFileName, *records));
  return Open(folder);
}

Result<std::unique_ptr<Store>> Store::Open(const std::filesystem::path& folder) {
  auto file = StoreFile::Open(folder / kFileName);
  if (!file) {
    return file.error();
  }
  return std::unique_ptr<Store>(new Store(std::move(*file)));
}

Status Store::Set(std::string_view key, std::string_view value) {
  if (key.empty()) {
    return Error{EINVAL, "a key may not be empty"};
  }
  SIM_TRY(CheckText("key", key, kMaxKey));
  SIM_TRY(CheckText("value", value, kMaxValue));
  if (NextFaultOfCall("store").action == FaultAction::kFail) {
    return Error{ENOSPC, "cannot write the key store: no space left on its disk"};
  }
  return m_file->Append(key, value);
}

Result<std::optional<std::string>> Store::Get(std::string_view key) const {
  std::optional<std::string> value;
  SIM_TRY(ForEachRecord(m_file, [&](Record record) {
    if (record.key == key) {
      value = std::move(record.value);
    }
  }));
  return value;
}

}  // namespace sim::vconf
