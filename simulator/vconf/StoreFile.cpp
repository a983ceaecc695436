// SPDX-License-Identifier: Apache-2.0
#include "simulator/vconf/StoreFile.h"

#include <fcntl.h>
#include <sched.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string>
#include <utility>

namespace sim::vconf {
namespace {

constexpr uint64_t kMagic = 0x31'66'6e'6f'63'76'00'0a;  // a file of another kind or layout is refused

/// At the start of the file. Written in one call within one page; the complements show a reader that he met a write.
struct Header {
  uint64_t magic = kMagic;
  Committed committed{};
  uint64_t notLength = 0;
  uint64_t notSequence = 0;
};
static_assert(sizeof(Header) == 40);

/// Before the bytes of each key and value.
struct RecordHeader {
  uint64_t sequence;
  uint32_t keyLength;
  uint32_t valueLength;
};
static_assert(sizeof(RecordHeader) == 16);

/// A write of the header takes less than a microsecond, so this many readings never all meet one.
constexpr int kHeaderReadings = 1000;

Error SystemError(const std::string& what, const std::filesystem::path& path) {
  const int code = errno;
  return {code, what + " " + path.string() + ": " + std::strerror(code)};
}

Header MakeHeader(const Committed& committed) {
  return {.committed = committed, .notLength = ~committed.length, .notSequence = ~committed.sequence};
}

bool IsWhole(const Header& header) {
  return header.notLength == ~header.committed.length && header.notSequence == ~header.committed.sequence;
}

/// Fails with ENOSPC where the disk took a part only.
bool WriteAt(int fd, uint64_t position, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t count = pwrite(fd, bytes.data(), bytes.size(), static_cast<off_t>(position));
    if (count < 0 && errno == EINTR) {
      continue;
    }
    if (count <= 0) {
      errno = count == 0 ? ENOSPC : errno;
      return false;
    }
    position += static_cast<uint64_t>(count);
    bytes.remove_prefix(static_cast<size_t>(count));
  }
  return true;
}

template <typename T>
std::string_view BytesOf(const T& value) {
  return {reinterpret_cast<const char*>(&value), sizeof value};
}

bool ReadAt(int fd, uint64_t position, void* bytes, size_t size) {
  errno = EIO;  // for a file that ends too early
  return pread(fd, bytes, size, static_cast<off_t>(position)) == static_cast<ssize_t>(size);
}

std::string EncodeRecord(uint64_t sequence, std::string_view key, std::string_view value) {
  const RecordHeader header{sequence, static_cast<uint32_t>(key.size()), static_cast<uint32_t>(value.size())};
  return std::string(BytesOf(header)).append(key).append(value);
}

/// The lock among processes; it goes with the process that holds it.
class FileLock {
 public:
  explicit FileLock(int fd) : m_fd(fd) {
    do {
      m_taken = flock(fd, LOCK_EX) == 0;
    } while (!m_taken && errno == EINTR);
  }
  ~FileLock() {
    if (m_taken) {
      flock(m_fd, LOCK_UN);
    }
  }
  FileLock(const FileLock&) = delete;
  FileLock& operator=(const FileLock&) = delete;

  explicit operator bool() const { return m_taken; }

 private:
  const int m_fd;
  bool m_taken = false;
};

/// A complete file beside `path`, to be put in its place at once: nobody ever opens half a file.
Status WriteTwin(const std::filesystem::path& twin, const std::vector<Record>& records) {
  UniqueFd fd(open(twin.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600));
  std::string bytes(sizeof(Header), '\0');
  uint64_t sequence = 0;
  for (const Record& record : records) {
    bytes += EncodeRecord(++sequence, record.key, record.value);
  }
  const Header header = MakeHeader({bytes.size(), sequence});
  bytes.replace(0, sizeof header, BytesOf(header));
  if (!fd || !WriteAt(fd.Get(), 0, bytes)) {
    const Error error = SystemError("cannot write", twin);
    unlink(twin.c_str());
    return error;
  }
  return Ok();
}

std::filesystem::path TwinOf(const std::filesystem::path& path) {
  return path.string() + "." + std::to_string(getpid());
}

/// Makes a file without records unless another process was faster.
Status MakeEmpty(const std::filesystem::path& path) {
  const std::filesystem::path twin = TwinOf(path);
  SIM_TRY(WriteTwin(twin, {}));
  const bool linked = link(twin.c_str(), path.c_str()) == 0 || errno == EEXIST;
  const Error error = SystemError("cannot make", path);
  unlink(twin.c_str());
  return linked ? Ok() : error;
}

}  // namespace

Result<std::shared_ptr<StoreFile>> StoreFile::Open(const std::filesystem::path& path) {
  if (access(path.c_str(), F_OK) != 0) {
    SIM_TRY(MakeEmpty(path));
  }
  UniqueFd fd(open(path.c_str(), O_RDWR | O_CLOEXEC));
  if (!fd && (errno == EACCES || errno == EROFS)) {
    fd.Reset(open(path.c_str(), O_RDONLY | O_CLOEXEC));
  }
  if (!fd) {
    return SystemError("cannot open", path);
  }
  std::shared_ptr<StoreFile> file(new StoreFile(path, std::move(fd)));
  if (const auto committed = file->ReadCommitted(); !committed) {
    return committed.error();
  }
  return file;
}

Status StoreFile::Replace(const std::filesystem::path& path, const std::vector<Record>& records) {
  const std::filesystem::path twin = TwinOf(path);
  SIM_TRY(WriteTwin(twin, records));
  if (rename(twin.c_str(), path.c_str()) != 0) {
    const Error error = SystemError("cannot replace", path);
    unlink(twin.c_str());
    return error;
  }
  return Ok();
}

Status StoreFile::Append(std::string_view key, std::string_view value) {
  const std::lock_guard threads(m_mutex);
  const FileLock processes(m_fd.Get());
  return processes ? AppendLocked(key, value) : SystemError("cannot lock", m_path);
}

/// The record first, the header that makes it count last: a writer may be killed at any point between.
Status StoreFile::AppendLocked(std::string_view key, std::string_view value) {
  const auto before = ReadCommitted();
  if (!before) {
    return before.error();
  }
  const std::string bytes = EncodeRecord(before->sequence + 1, key, value);
  const Committed after{before->length + bytes.size(), before->sequence + 1};
  if (after.length > Store::kMaxFile) {
    return Error{EFBIG, "the session's store is full; a new session empties it"};
  }
  const bool written = WriteAt(m_fd.Get(), before->length, bytes) && WriteAt(m_fd.Get(), 0, BytesOf(MakeHeader(after)));
  return written ? Ok() : SystemError("cannot write", m_path);
}

Result<Committed> StoreFile::ReadCommitted() const {
  Header header;
  for (int reading = 0; reading < kHeaderReadings; ++reading) {
    if (!ReadAt(m_fd.Get(), 0, &header, sizeof header)) {
      return SystemError("cannot read", m_path);
    }
    if (header.magic != kMagic) {
      break;
    }
    if (IsWhole(header)) {
      return header.committed;
    }
    sched_yield();
  }
  return Error{EINVAL, m_path.string() + " is not a store of this version"};
}

RecordReader::RecordReader(std::shared_ptr<const StoreFile> file)
    : RecordReader(std::move(file), {.length = sizeof(Header)}) {}

RecordReader::RecordReader(std::shared_ptr<const StoreFile> file, const Committed& behind)
    : m_file(std::move(file)), m_position(behind.length), m_committed(behind.length) {}

Result<std::optional<Record>> RecordReader::Next() {
  if (m_position >= m_committed) {
    const auto committed = m_file->ReadCommitted();
    if (!committed) {
      return committed.error();
    }
    m_committed = committed->length;
  }
  if (m_position >= m_committed) {
    return std::optional<Record>();
  }
  auto record = ReadRecord();
  return record ? Result<std::optional<Record>>(std::move(*record)) : record.error();
}

Result<Record> RecordReader::ReadRecord() {
  RecordHeader header;
  if (!ReadAt(m_file->m_fd.Get(), m_position, &header, sizeof header)) {
    return SystemError("cannot read", m_file->m_path);
  }
  const uint64_t size = uint64_t{header.keyLength} + header.valueLength;
  if (m_position + sizeof header + size > m_committed) {
    return Error{EINVAL, m_file->m_path.string() + " is damaged"};
  }
  std::string bytes(size, '\0');
  if (!ReadAt(m_file->m_fd.Get(), m_position + sizeof header, bytes.data(), size)) {
    return SystemError("cannot read", m_file->m_path);
  }
  m_position += sizeof header + size;
  return Record{header.sequence, bytes.substr(0, header.keyLength), bytes.substr(header.keyLength)};
}

}  // namespace sim::vconf
