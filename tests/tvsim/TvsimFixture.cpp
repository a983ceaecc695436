// SPDX-License-Identifier: Apache-2.0
#include "tests/tvsim/TvsimFixture.h"

#include <fcntl.h>
#include <unistd.h>

#include <fstream>
#include <regex>
#include <thread>

namespace sim::tvsim {
namespace {

namespace fs = std::filesystem;
using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr milliseconds kGenerousTime(60000);

bool StartsSession(const std::string& subcommand) {
  return subcommand == "run" || subcommand == "exec" || subcommand == "shell" || subcommand == "serve";
}

}  // namespace

std::string ContentsOf(const std::string& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

std::vector<std::string> CommandsIn(const std::string& log) {
  std::vector<std::string> commands;
  const std::regex call(R"re("command":"([^"]*)"(,"params":\[([^\]]*)\])?)re");
  for (std::sregex_iterator at(log.begin(), log.end(), call); at != std::sregex_iterator(); ++at) {
    std::string text = at->str(1) + "(" + at->str(3) + ")";
    std::erase(text, '"');
    commands.push_back(text);
  }
  return commands;
}

Equipment WithFakeEngine() {
  return {FAKE_ENGINE, "640x360"};
}
Equipment WithEngine() {
  return {ENGINE_PROGRAM, "1920x1080"};
}

TvsimFixture::TvsimFixture(Equipment equipment) : m_equipment(std::move(equipment)) {
  std::string name = testing::TempDir() + "tvsim-XXXXXX";
  m_folder = mkdtemp(name.data());
  fs::create_directory(m_folder / "runtime");
}

/// What a killed tvsim has started ends a moment after it, and still writes into the folder.
TvsimFixture::~TvsimFixture() {
  Await("the end of all processes", [this] { return Processes().empty(); });
  fs::remove_all(m_folder);
}

std::string TvsimFixture::PictureNamed(const std::string& name) {
  return FileWith(name, "not read by the fake engine");
}

std::string TvsimFixture::FileWith(const std::string& name, const std::string& text) {
  std::ofstream(PathOf(name)) << text;
  return PathOf(name);
}

ProcessRequest TvsimFixture::Request(std::vector<std::string> arguments) const {
  ProcessRequest request{
      {TVSIM_PROGRAM},
      {{"XDG_RUNTIME_DIR", PathOf("runtime")}, {"XDG_STATE_HOME", PathOf("state")}, {"OLM_LOG_FILE", ""}},
      {}};
  const bool session = StartsSession(arguments.front());
  request.arguments.insert(request.arguments.end(), arguments.begin(), arguments.end());
  if (session) {
    request.arguments.insert(request.arguments.end(),
                             {"--headless", "--size=" + m_equipment.screen_size, "--engine=" + m_equipment.engine,
                              "--engine-log=" + PathOf("engine.log")});
  }
  return request;
}

ChildProcess TvsimFixture::Start(std::vector<std::string> arguments, const std::string& input) {
  return StartReading(UniqueFd(open(FileWith("input", input).c_str(), O_RDONLY | O_CLOEXEC)), std::move(arguments));
}

ChildProcess TvsimFixture::StartReading(const UniqueFd& input, std::vector<std::string> arguments) {
  ProcessRequest request = Request(std::move(arguments));
  const auto open_file = [this](const char* name) {
    return UniqueFd(open(PathOf(name).c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600));
  };
  const UniqueFd output = open_file("output"), errors = open_file("errors");
  request.descriptors = {{input.Get(), 0}, {output.Get(), 1}, {errors.Get(), 2}};
  Result<ChildProcess> process = ChildProcess::Start(request);
  EXPECT_TRUE(process) << (process ? "" : process.error().reason);
  return std::move(*process);
}

Outcome TvsimFixture::Run(std::vector<std::string> arguments, const std::string& input) {
  const auto end = Start(std::move(arguments), input).Wait(kGenerousTime);
  EXPECT_TRUE(end) << "tvsim does not end";
  return {end && !end->signalled ? end->status : -1, ContentsOf(PathOf("output")), ContentsOf(PathOf("errors"))};
}

std::string TvsimFixture::EngineLog() const {
  return ContentsOf(PathOf("engine.log"));
}

std::vector<std::string> TvsimFixture::Processes() const {
  std::vector<std::string> names;
  for (const auto& entry : fs::directory_iterator("/proc")) {
    // What this test's tvsim started has inherited the runtime folder, which is this test's alone.
    if (ContentsOf(entry.path() / "environ").find(PathOf("runtime")) != std::string::npos) {
      std::string name = ContentsOf(entry.path() / "comm");
      names.push_back(name.substr(0, name.find('\n')) + " " + entry.path().filename().string());
    }
  }
  return names;
}

pid_t TvsimFixture::ProcessNamed(const std::string& name) const {
  for (const std::string& process : Processes()) {
    if (process.starts_with(name + " ")) {
      return std::stoi(process.substr(name.size() + 1));
    }
  }
  return 0;
}

std::vector<std::string> TvsimFixture::CrashRecords() const {
  std::vector<std::string> records;
  std::error_code none;
  for (const auto& entry : fs::directory_iterator(PathOf("state/tvsim"), none)) {
    if (entry.path().filename().string().starts_with("crash-")) {
      records.push_back(ContentsOf(entry.path()));
    }
  }
  return records;
}

std::vector<std::string> TvsimFixture::SessionFiles() const {
  std::vector<std::string> files;
  std::error_code none;
  for (const auto& entry : fs::recursive_directory_iterator(PathOf("runtime/tvsim"), none)) {
    files.push_back(entry.path());
  }
  return files;
}

void TvsimFixture::Await(const std::string& what, const std::function<bool()>& condition) {
  const auto deadline = steady_clock::now() + kGenerousTime;
  while (!condition()) {
    ASSERT_LT(steady_clock::now(), deadline) << "waited for: " << what;
    std::this_thread::sleep_for(milliseconds(5));
  }
}

}  // namespace sim::tvsim
