// SPDX-License-Identifier: Apache-2.0
#include "simulator/tvsim/doctor/Doctor.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>

#include "simulator/lumaview/cage/CageFinding.h"
#include "simulator/tvsim/engine/CrashRecord.h"
#include "simulator/tvsim/process/ChildProcess.h"
#include "simulator/tvsim/process/Namespaces.h"
#include "simulator/tvsim/screen/Screen.h"
#include "simulator/tvsim/session/RuntimeFolder.h"

namespace sim::tvsim {
namespace {

namespace fs = std::filesystem;

constexpr std::chrono::milliseconds kPatience(10000);
constexpr rlim_t kEnoughFiles = 256;  // sockets of clients, buffers, pictures

Finding Good(const std::string& what, const std::string& found) {
  return {Health::kGood, what, found, ""};
}

/// A screen can be had on the server that is there, or on one of its own.
std::vector<Finding> ExamineScreen() {
  std::vector<Finding> findings;
  const auto screen = Screen::Connect();
  const bool xvfb = !FindProgram("Xvfb").empty();
  const bool own_namespaces = NamespacesAllowed();
  if (screen) {
    const bool manager = (*screen)->HasWindowManager(), compositor = (*screen)->HasCompositor();
    findings.push_back(Good("X server", std::to_string((*screen)->Width()) + "x" + std::to_string((*screen)->Height()) +
                                            " on \":0\"" + (manager ? ", a window manager" : ", no window manager") +
                                            (compositor ? ", a compositor" : ", no compositor")));
    const Status redirected = (*screen)->EnsureRedirected();
    findings.push_back(redirected
                           ? Good("Composite extension", "there")
                           : Finding{Health::kMissing, "Composite extension", redirected.error().reason, "--headless"});
  } else {
    findings.push_back(
        xvfb ? Good("X server", "none on \":0\", a session makes one")
             : Finding{Health::kMissing, "X server", "none on \":0\"", "start one there, or install the package xvfb"});
  }
  findings.push_back(xvfb
                         ? Good("Xvfb", FindProgram("Xvfb"))
                         : Finding{Health::kLacking, "Xvfb", "not here, so no --headless", "install the package xvfb"});
  findings.push_back(own_namespaces
                         ? Good("namespaces", "allowed, so that any number of sessions can have a screen of their own")
                         : Finding{Health::kLacking, "namespaces", "not allowed, so one screen of its own at a time",
                                   "run as root, or set the sysctl kernel.unprivileged_userns_clone to 1"});
  return findings;
}

Finding ExamineCompanion(const std::string& program, const std::string& without) {
  const std::string path = FindProgram(program);
  return path.empty() ? Finding{Health::kLacking, program, "not here; " + without, "install the package " + program}
                      : Good(program, path);
}

/// An engine that gets no input ends at once, in good order, if it and its libraries are in order.
Finding ExamineEngine(const std::string& engine) {
  const std::string path = FindProgram(engine);
  if (path.empty()) {
    return {Health::kMissing, "engine", "no '" + engine + "' beside tvsim or in PATH", "name it with --engine"};
  }
  const UniqueFd nothing(open("/dev/null", O_RDWR | O_CLOEXEC));
  auto process = ChildProcess::Start({{path}, {}, {{nothing.Get(), 1}, {nothing.Get(), 2}}});
  const auto end = process ? process->Wait(kPatience) : std::nullopt;
  if (!end || end->signalled || end->status != 0) {
    return {Health::kMissing, "engine", path + (end ? " ends with " + end->Text() : " does not end without input"),
            "start it by hand and read what it says"};
  }
  return Good("engine", path);
}

/// Beside this program as it was built, or where the libraries are installed.
fs::path DecodersFolder() {
  std::error_code error;
  const fs::path beside = fs::read_symlink("/proc/self/exe", error).parent_path().parent_path() / "lib" / "lumaview";
  return fs::is_directory(beside, error) ? beside : fs::path(LUMAVIEW_MODULE_FOLDER);
}

/// The decoders stand beside the picture library, one file a format, with two files that are none.
Finding ExamineFormats() {
  std::error_code error;
  const fs::path folder = DecodersFolder();
  std::vector<std::string> formats;
  const std::string before = "liblumaview-", after = ".so";
  for (const auto& entry : fs::directory_iterator(folder, error)) {
    const std::string name = entry.path().filename();
    if (name.starts_with(before) && name.ends_with(after) && name != before + "colour" + after &&
        name != before + "kernels" + after) {
      formats.push_back(name.substr(before.size(), name.size() - before.size() - after.size()));
    }
  }
  std::ranges::sort(formats);
  std::string text = "bmp, pnm, tga, qoi";
  for (const std::string& format : formats) {
    text += ", " + format;
  }
  return formats.empty() ? Finding{Health::kLacking, "formats", "only " + text + " beside tvsim",
                                   "build with the libraries of debian/control"}
                         : Good("formats", text);
}

/// Pictures come from anywhere; what their decoders could do is told here, as the engine tells it only in its log.
Finding ExamineCage() {
  const lumaview::CageFinding cage = lumaview::ExamineCage();
  return cage.is_whole ? Good("decoders", "in processes of their own: " + cage.text)
                       : Finding{Health::kLacking, "decoders", cage.text,
                                 "a kernel with landlock, seccomp allowed, LUMAVIEW_CAGE unset"};
}

Finding ExamineRuntimeFolder() {
  const auto folder = RuntimeFolder::Create("doctor");
  if (!folder) {
    return {Health::kMissing, "runtime folder", folder.error().reason, "set XDG_RUNTIME_DIR to a folder of your own"};
  }
  folder->Remove();
  return Good("runtime folder", fs::path(folder->Path()).parent_path());
}

/// The first lines of a record say how the engine ended, and at what.
Finding ExamineCrashes() {
  const auto newest = NewestCrashRecord();
  if (!newest) {
    return Good("crashes", "none on record");
  }
  std::ifstream record(*newest);
  std::string text;
  for (std::string line; std::getline(record, line) && !line.empty();) {
    text += line + "; ";
  }
  return {Health::kLacking, "crashes", text + *newest, "report it with that file, then remove the file"};
}

Finding ExamineLimits() {
  rlimit files{};
  getrlimit(RLIMIT_NOFILE, &files);
  const UniqueFd memory(memfd_create("doctor", MFD_CLOEXEC));
  if (!memory) {
    return {Health::kLacking, "limits", "no memfd, so pictures reach the screen more slowly",
            "a kernel with memfd_create"};
  }
  return files.rlim_cur < kEnoughFiles
             ? Finding{Health::kLacking, "limits", std::to_string(files.rlim_cur) + " open files", "ulimit -n 1024"}
             : Good("limits", std::to_string(files.rlim_cur) + " open files, memfd");
}

}  // namespace

std::vector<Finding> Examine(const std::string& engine) {
  std::vector<Finding> findings = ExamineScreen();
  findings.push_back(ExamineCompanion("openbox", "windows on a screen of its own are not managed"));
  findings.push_back(ExamineCompanion("xcompmgr", "so no --compositor"));
  findings.push_back(ExamineEngine(engine));
  findings.push_back(ExamineFormats());
  findings.push_back(ExamineCage());
  findings.push_back(ExamineRuntimeFolder());
  findings.push_back(ExamineLimits());
  findings.push_back(ExamineCrashes());
  return findings;
}

bool IsFit(const std::vector<Finding>& findings) {
  return std::ranges::none_of(findings, [](const Finding& finding) { return finding.health == Health::kMissing; });
}

}  // namespace sim::tvsim
