// SPDX-License-Identifier: Apache-2.0
/// A format's module as an attacker would have it: its "pictures" begin as a TIFF does and name what the decoder is to
/// try. A try that succeeds shows a picture. It stands in for the real module in the folder of one test only.
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/ptrace.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <climits>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

#include "simulator/lumaview/decode/Module.h"

namespace sim::lumaview {
namespace {

constexpr int kChannelFd = 3;

Error Refused() {
  return {kDamaged, "the system refused"};
}
Status Outcome(bool succeeded) {
  return succeeded ? Ok() : Status(Refused());
}

Status OpenForReading() {
  return Outcome(open("/etc/passwd", O_RDONLY | O_CLOEXEC) >= 0);
}
Status OpenForWriting() {
  return Outcome(open("/tmp/lumaview-hostile", O_WRONLY | O_CREAT | O_CLOEXEC, 0600) >= 0);
}
Status OpenSocket() {
  return Outcome(socket(AF_UNIX, SOCK_STREAM, 0) >= 0);
}
Status Execute() {
  char name[] = "/bin/true";
  char* const argv[] = {name, nullptr};
  execve(name, argv, nullptr);
  return Refused();
}
Status Trace() {
  return Outcome(ptrace(PTRACE_ATTACH, getppid(), nullptr, nullptr) == 0);
}
Status KillParent() {
  return Outcome(kill(getppid(), SIGKILL) == 0);
}
/// Few enough to do no harm where nothing stops them.
Status Fork() {
  for (int i = 0; i < 20; ++i) {
    if (fork() == 0) {
      _exit(0);
    }
  }
  return Ok();
}
Status LookUp() {
  struct stat status {};
  return Outcome(stat("/etc/passwd", &status) == 0);
}
Status MakeCode() {
  return Outcome(mmap(nullptr, 4096, PROT_READ | PROT_EXEC, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0) != MAP_FAILED);
}
Status TakeMemory() {
  constexpr size_t kBytes = size_t{2} << 30;
  std::vector<uint8_t> bytes(kBytes, 1);
  return Outcome(bytes[kBytes - 1] == 1);
}
Status WriteBeyond() {
  const auto page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
  auto* bytes =
      static_cast<volatile char*>(mmap(nullptr, 2 * page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
  munmap(const_cast<char*>(bytes + page), page);
  for (size_t i = 0; i < 2 * page; ++i) {
    bytes[i] = 1;
  }
  return Ok();
}
Status RunForEver() {
  for (volatile bool run = true; run;) {
  }
  return Ok();
}
Status Abort() {
  std::abort();
}
Status Leave() {
  _exit(0);
}
/// A packet of another size than any that is expected.
Status TalkNonsense() {
  const char words[] = "nonsense";
  msghdr packet{};
  iovec part{const_cast<char*>(words), sizeof words};
  packet.msg_iov = &part;
  packet.msg_iovlen = 1;
  sendmsg(kChannelFd, &packet, 0);
  return RunForEver();
}
/// The memory of the frame, for later: the engine's pixels would change under it.
Status KeepTheFrame() {
  for (int fd = kChannelFd + 1; fd < kChannelFd + 8; ++fd) {
    struct stat status {};
    if (fstat(fd, &status) == 0 || errno != EBADF) {
      mmap(nullptr, 4096, PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0);
    }
  }
  return Ok();
}

struct Deed {
  std::string_view name;
  Status (*run)();
};
constexpr Deed kDeeds[] = {
    {"open-for-reading", OpenForReading},
    {"open-for-writing", OpenForWriting},
    {"socket", OpenSocket},
    {"execute", Execute},
    {"trace", Trace},
    {"kill-parent", KillParent},
    {"fork", Fork},
    {"look-up", LookUp},
    {"make-code", MakeCode},
    {"take-memory", TakeMemory},
    {"write-beyond", WriteBeyond},
    {"run-for-ever", RunForEver},
    {"abort", Abort},
    {"leave", Leave},
    {"talk-nonsense", TalkNonsense},
    {"keep-the-frame", KeepTheFrame},
};

class HostileDecoder : public Decoder {
 public:
  explicit HostileDecoder(std::string deed) : m_deed(std::move(deed)) {
    m_info.type = LUMAVIEW_TYPE_TIFF;
    m_info.stored = m_deed == "lie-about-size" ? Size{INT_MAX, -1} : Size{8, 8};
  }

  const PictureInfo& GetInfo() const override {
    // Asked a second time, it has grown: what was checked is not what is told.
    if (m_deed == "grow-behind-the-check" && ++m_asked == 2) {
      m_info.stored = {INT_MAX, INT_MAX};
    }
    return m_info;
  }

  Status Decode(Size, RowSink& sink) override {
    for (const Deed& deed : kDeeds) {
      if (deed.name == m_deed) {
        SIM_TRY(deed.run());
      }
    }
    constexpr int kSide = 8;
    SIM_TRY(sink.Begin({{kSide, kSide}, PixelLayout::kBgrx, {}}));
    const std::array<uint8_t, kSide * 4> row{};
    for (int y = 0; y < (m_deed == "too-few-rows" ? 1 : kSide); ++y) {
      SIM_TRY(sink.Row(y, row.data()));
    }
    return Ok();
  }

 private:
  const std::string m_deed;
  mutable PictureInfo m_info;
  mutable int m_asked = 0;
};

Result<std::unique_ptr<Decoder>> OpenHostile(Source& source) {
  std::array<uint8_t, 64> head{};
  source.Seek(4);
  const size_t length = source.Read(head);
  const std::string deed(head.begin(), head.begin() + static_cast<ptrdiff_t>(length));
  if (deed == "crash-in-header") {
    *static_cast<volatile char*>(nullptr) = 1;
  }
  return std::unique_ptr<Decoder>(std::make_unique<HostileDecoder>(deed));
}

}  // namespace
}  // namespace sim::lumaview

LUMAVIEW_DECODER_MODULE(sim::lumaview::OpenHostile);
