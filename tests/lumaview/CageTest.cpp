// SPDX-License-Identifier: Apache-2.0
// Pictures that are decoded in processes of their own.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <seccomp.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <future>
#include <set>
#include <thread>

#include "simulator/lumaview/cage/Bars.h"
#include "simulator/lumaview/cage/Cage.h"
#include "simulator/lumaview/cage/CageFinding.h"
#include "simulator/lumaview/cage/Message.h"
#include "simulator/lumaview/picture/FrameStream.h"
#include "tests/lumaview/PictureFiles.h"
#include "tests/lumaview/Processes.h"
#include "tests/lumaview/Screen.h"

namespace sim::lumaview {
namespace {

using namespace lumaview_test;

constexpr Size kWindow{160, 120};

CancelFlag NeverCancelled() {
  return std::make_shared<Cancellation>();
}

class GivenCage : public ::testing::Test {
 protected:
  void SetUp() override {
    if (const CageFinding finding = ExamineCage(); !finding.is_whole) {
      GTEST_SKIP() << finding.text;
    }
    auto started = Cage::Start();
    ASSERT_TRUE(started) << started.error().reason;
    cage = std::move(*started);
  }

  std::unique_ptr<FrameStream> Open(const std::string& path) {
    auto stream = OpenCagedStream(*cage, *PictureFile::Open(path), NeverCancelled());
    EXPECT_TRUE(stream) << stream.error().reason;
    return stream ? std::move(*stream) : nullptr;
  }

  PictureFolder folder;
  std::unique_ptr<Cage> cage;
};

TEST_F(GivenCage, PictureIsTheSameAsWithoutIt) {
  const auto path = folder.WriteJpeg("turned.jpg", 640, 480, Quarters(640, 480, 0xFF0000, 0xFF00, 0xFF, 0xFFFFFF), 6);
  const auto local = OpenLocalStream(*PictureFile::Open(path), NeverCancelled());

  const auto stream = Open(path);
  const auto caged_frame = stream->RenderNext(View{}, kWindow);
  const auto local_frame = (*local)->RenderNext(View{}, kWindow);

  ASSERT_TRUE(caged_frame);
  EXPECT_EQ(UprightSize(stream->GetInfo()), (Size{480, 640}));
  const auto* caged = (*caged_frame)->GetPixels().pixels;
  const auto* wanted = (*local_frame)->GetPixels().pixels;
  EXPECT_TRUE(std::equal(wanted, wanted + kWindow.width * kWindow.height, caged));
}

TEST_F(GivenCage, FinishedFrameCannotBeChangedByAnybody) {
  const auto frame = Open(folder.WritePng("red.png", 64, 48, Solid(0xFF0000)))->RenderNext(View{}, kWindow);
  ASSERT_TRUE(frame);
  const int fd = (*frame)->GetMemory()->GetFd();

  EXPECT_EQ(mmap(nullptr, 4096, PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0), MAP_FAILED);
  EXPECT_LT(pwrite(fd, "x", 1, 0), 0);
  EXPECT_NE(ftruncate(fd, 0), 0);
  EXPECT_NE(fcntl(fd, F_ADD_SEALS, F_SEAL_SHRINK), 0) << "the seals themselves are sealed";
}

/// What the descriptors of a process lead to, without numbers; empty where the system does not tell.
std::multiset<std::string> OpenFilesOf(pid_t pid) {
  std::multiset<std::string> files;
  std::error_code error;
  for (const auto& entry : std::filesystem::directory_iterator("/proc/" + std::to_string(pid) + "/fd", error)) {
    const std::string target = std::filesystem::read_symlink(entry.path(), error);
    files.insert(target.substr(0, target.find(':')));
  }
  return files;
}

TEST_F(GivenCage, ProcessOfAPictureHasItsFileAndItsChannelAndNothingElse) {
  cage.reset();
  const UniqueFd bystander(open("/proc/self/exe", O_RDONLY));  // inherited by what is started now
  cage = std::move(*Cage::Start());
  const auto path = folder.WriteGif("two.gif", 8, 8, {0xFF0000, 0x00FF00}, 100, 0);

  const auto stream = Open(path);
  ASSERT_TRUE(stream->RenderNext(View{}, kWindow));

  std::multiset<std::string> found;
  for (const pid_t child : FindDescendants("lumaview-decode")) {
    const auto files = OpenFilesOf(child);
    if (files.contains(path)) {
      found = files;
    }
  }
  if (found.empty() && geteuid() != 0) {
    GTEST_SKIP() << "only root sees what a confined process has open";
  }
  EXPECT_EQ(found, (std::multiset<std::string>{"/dev/null", "/dev/null", "/dev/null", path, "socket"}));
}

TEST(GivenFrameWithHoles, AllItsMemoryIsThereOnceItIsFrozen) {
  auto file = Frame::CreateFile(kWindow);
  ASSERT_TRUE(file);

  const auto frame = Frame::Freeze(std::move(*file), kWindow);

  ASSERT_TRUE(frame);
  struct stat status {};
  ASSERT_EQ(fstat((*frame)->GetMemory()->GetFd(), &status), 0);
  EXPECT_GE(status.st_blocks * 512, status.st_size);
}

/// Kernels before 6.7 do not show a sealed file to anybody, so it is sealed more weakly there.
bool KernelShowsSealedFiles() {
  constexpr size_t kBytes = 4096;
  const UniqueFd file(memfd_create("sealed", MFD_CLOEXEC | MFD_ALLOW_SEALING));
  const bool sealed = ftruncate(file.Get(), kBytes) == 0 && fcntl(file.Get(), F_ADD_SEALS, F_SEAL_WRITE) == 0;
  void* shown = mmap(nullptr, kBytes, PROT_READ, MAP_SHARED, file.Get(), 0);
  return sealed && shown != MAP_FAILED && munmap(shown, kBytes) == 0;
}

TEST(GivenFrameThatAnotherStillWrites, NothingOfThatIsSeenOnceItIsFrozen) {
  if (!KernelShowsSealedFiles()) {
    GTEST_SKIP() << "on this kernel a mapping that is there can go on writing";
  }
  auto file = Frame::CreateFile(kWindow);
  ASSERT_TRUE(file);
  const size_t bytes = static_cast<size_t>(kWindow.width) * static_cast<size_t>(kWindow.height) * sizeof(uint32_t);
  auto* kept = static_cast<uint32_t*>(mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_SHARED, file->Get(), 0));
  ASSERT_NE(kept, MAP_FAILED);
  std::fill_n(kept, bytes / sizeof(uint32_t), 0xFF00FF00u);

  const auto frame = Frame::Freeze(std::move(*file), kWindow);
  std::fill_n(kept, bytes / sizeof(uint32_t), 0xFFFF0000u);

  ASSERT_TRUE(frame);
  const ConstImageView pixels = (*frame)->GetPixels();
  EXPECT_EQ(pixels.Row(0)[0], 0xFF00FF00u);
  EXPECT_EQ(pixels.Row(kWindow.height - 1)[kWindow.width - 1], 0xFF00FF00u);
  munmap(kept, bytes);
}

/// The processors that a process may use; none when it is gone.
cpu_set_t ProcessorsOf(pid_t pid) {
  cpu_set_t processors;
  CPU_ZERO(&processors);
  sched_getaffinity(pid, sizeof processors, &processors);
  return processors;
}

TEST_F(GivenCage, ProcessOfAPictureHasAllProcessorsOfTheEngine) {
  const auto stream = Open(folder.WriteGif("two.gif", 8, 8, {0xFF0000, 0x00FF00}, 100, 0));
  ASSERT_TRUE(stream->RenderNext(View{}, kWindow));

  const std::vector<pid_t> children = FindDescendants("lumaview-decode");

  ASSERT_FALSE(children.empty());
  const cpu_set_t ours = ProcessorsOf(getpid());
  const cpu_set_t theirs = ProcessorsOf(children.front());
  EXPECT_TRUE(CPU_EQUAL(&ours, &theirs));
}

TEST_F(GivenCage, AnimationPlaysOnInItsProcess) {
  const auto stream = Open(folder.WriteGif("two.gif", 8, 8, {0xFF0000, 0x00FF00}, 70, 0));

  for (const uint32_t colour : {0xFFFF0000u, 0xFF00FF00u, 0xFFFF0000u}) {
    const auto frame = stream->RenderNext(View{}, kWindow);
    ASSERT_TRUE(frame);
    EXPECT_EQ((*frame)->GetPixels().Row(60)[80], colour);
    EXPECT_EQ(stream->GetFrameMilliseconds(), 70);
  }
  EXPECT_EQ(stream->GetInfo().frames, 2);
}

TEST_F(GivenCage, EveryPictureHasANewProcess) {
  const auto path = folder.WritePng("red.png", 64, 48, Solid(0xFF0000));
  const auto first = Open(path);
  const auto second = Open(path);

  EXPECT_TRUE(Eventually([] { return FindDescendants("lumaview-decode").size() == 2; }));
}

TEST_F(GivenCage, CancellingEndsTheProcessAndTheWait) {
  const auto cancelled = NeverCancelled();
  const auto path = folder.WriteJpeg("large.jpg", 6000, 4000, Solid(0x808080));
  auto stream = OpenCagedStream(*cage, *PictureFile::Open(path), cancelled);
  ASSERT_TRUE(stream);

  cancelled->Cancel();
  const auto frame = (*stream)->RenderNext(View{}, kWindow);

  ASSERT_FALSE(frame);
  EXPECT_EQ(frame.error().code, kCancelled);
  EXPECT_TRUE(Eventually([] { return FindDescendants("lumaview-decode").size() == 1; })) << "the next picture's";
}

TEST_F(GivenCage, CoefficientsOfAHugePictureGoToAFile) {
  setenv("TMPDIR", "/nonexistent", 1);
  EXPECT_FALSE(OpenScratchFile(4096));
  unsetenv("TMPDIR");
  const auto file = OpenScratchFile(4096);
  ASSERT_TRUE(file);
  EXPECT_EQ(lseek(file->Get(), 0, SEEK_END), 4096);
}

TEST_F(GivenCage, LosingAllProcessesIsNoticed) {
  const auto path = folder.WritePng("red.png", 64, 48, Solid(0xFF0000));
  ASSERT_TRUE(Eventually([] { return FindDescendants("lumaview-decode").size() == 1; }));
  const auto all = FindDescendants("");
  kill(FindDescendants("lumaview-keeper").front(), SIGKILL);
  for (const pid_t pid : all) {
    ASSERT_TRUE(Eventually([pid] { return !IsAlive(pid); }));
  }

  EXPECT_FALSE(OpenCagedStream(*cage, *PictureFile::Open(path), NeverCancelled()));

  EXPECT_FALSE(cage->IsUp());
}

/// As in containers that keep these calls for themselves. For good, so in a process of its own.
bool ForbidConfining() {
  const scmp_filter_ctx filter = seccomp_init(SCMP_ACT_ALLOW);
  const uint32_t refuse = SCMP_ACT_ERRNO(ENOSYS);
  seccomp_rule_add(filter, refuse, SCMP_SYS(landlock_create_ruleset), 0);
  seccomp_rule_add(filter, refuse, SCMP_SYS(seccomp), 0);
  seccomp_rule_add(filter, refuse, SCMP_SYS(prctl), 1, SCMP_A0(SCMP_CMP_EQ, PR_SET_SECCOMP));
  return seccomp_load(filter) == 0;
}

TEST_F(GivenCage, WithoutItsBarsPicturesStillHaveProcessesOfTheirOwn) {
  cage.reset();
  const auto path = folder.WritePng("red.png", 64, 48, Solid(0xFF0000));
  const pid_t child = fork();
  if (child == 0) {
    const bool unbarred = ForbidConfining() && cage::TryBars() == 0;
    auto started = Cage::Start();
    const auto stream =
        started ? OpenCagedStream(**started, *PictureFile::Open(path), NeverCancelled()) : started.error();
    const bool shown = stream && (*stream)->RenderNext(View{}, kWindow);
    _exit(unbarred && shown ? 0 : 1);
  }
  int status = -1;
  waitpid(child, &status, 0);

  EXPECT_EQ(status, 0);
}

TEST(GivenProcessWithThreads, CageIsNotStarted) {
  std::promise<void> end;
  std::thread other([&end] { end.get_future().wait(); });

  const auto cage = Cage::Start();

  end.set_value();
  other.join();
  ASSERT_FALSE(cage);
  EXPECT_EQ(cage.error().code, kNotReady);
}

class GivenHeaderOfAChild : public ::testing::Test {
 protected:
  GivenHeaderOfAChild() {
    PictureInfo info;
    info.type = LUMAVIEW_TYPE_PNG;
    info.stored = {64, 48};
    header.SetInfo(info, 0);
  }
  bool IsBelieved() const { return static_cast<bool>(header.GetInfo(Limits{})); }

  cage::Message header;
};

TEST_F(GivenHeaderOfAChild, IsBelievedAsItIs) {
  EXPECT_TRUE(IsBelieved());
}

TEST_F(GivenHeaderOfAChild, NumbersThatNoPictureHasAreNotBelieved) {
  struct Lie {
    size_t number;
    int32_t value;
  };
  for (const Lie lie : {Lie{0, -1}, Lie{0, 12}, Lie{1, 0}, Lie{1, -5}, Lie{2, 2'000'000}, Lie{3, 0}, Lie{3, 9},
                        Lie{4, 0}, Lie{4, 1'000'000}, Lie{5, -1}}) {
    const cage::Message honest = header;
    header.numbers[lie.number] = lie.value;
    EXPECT_FALSE(IsBelieved()) << lie.number << " = " << lie.value;
    header = honest;
  }
}

TEST_F(GivenHeaderOfAChild, TextWithoutAnEndIsCut) {
  header.code = kDamaged;
  header.text.fill('x');
  EXPECT_EQ(header.GetStatus().error().reason.size(), header.text.size());
}

TEST_F(GivenHeaderOfAChild, NumberOfAnErrorThatIsNoneBecomesDamaged) {
  header.code = 12345;
  EXPECT_EQ(header.GetStatus().error().code, kDamaged);
}

}  // namespace
}  // namespace sim::lumaview
