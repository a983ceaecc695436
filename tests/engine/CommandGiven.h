// SPDX-License-Identifier: Apache-2.0
/// What the tests of the command interface, the effects, the view controls and the queries start from.
#ifndef TESTS_ENGINE_COMMANDGIVEN_H
#define TESTS_ENGINE_COMMANDGIVEN_H

#include <locale>
#include <string>
#include <vector>

#include "tests/kit/Kit.h"

/// An engine that has run no command.
class GivenEngine : public kit::EngineTest {
 protected:
  static constexpr const char* kPicture = "/pictures/a.jpg";

  void SetUp() override {
    EngineTest::SetUp();
    m_engine = &MakeEngine();
    kit::Begin();
  }

  olm::CEmpEnginePicture& Engine() { return *m_engine; }
  olm::CPictureAdapter& Adapter() { return EngineTest::Adapter(*m_engine); }

  /// Sends one command; missing parameters are empty texts. The result's text is in `Result`.
  bool Send(const std::string& command, std::vector<std::string> params = {}) {
    params.resize(4);
    m_result = kUntouched;
    return m_engine->Execute(m_result, command, params[0], params[1], params[2], params[3]);
  }
  const std::string& Result() const { return m_result; }
  static constexpr const char* kUntouched = "untouched";

  /// Sends the command and compares all that happens with a section of golden/Execute-COMMAND.txt.
  void ExpectRow(const std::string& command, const std::vector<std::string>& params, const std::string& path) {
    ExpectCommand("Execute-" + command, command, params, path);
  }
  void ExpectCommand(const std::string& file, const std::string& command, const std::vector<std::string>& params,
                     const std::string& path) {
    ExpectOperation(file, path, [&] { return Send(command, params); });
  }

  /// Compares what `operation` does and returns with a section of golden/FILE.txt.
  template <typename Operation>
  void ExpectOperation(const std::string& file, const std::string& path, Operation operation) {
    kit::Begin();
    kit::Run(operation);
    kit::ExpectGolden(file, path);
    EXPECT_EQ(kit::PendingFailures(), 0U) << "a scripted failure did not happen";
  }

 private:
  olm::CEmpEnginePicture* m_engine = nullptr;
  std::string m_result;
};

/// While it lives, the process's locale separates thousands.
class GroupedThousands {
 public:
  GroupedThousands() : m_before(std::locale::global(std::locale(std::locale::classic(), new Dots))) {}
  ~GroupedThousands() { std::locale::global(m_before); }
  GroupedThousands(const GroupedThousands&) = delete;
  GroupedThousands& operator=(const GroupedThousands&) = delete;

 private:
  struct Dots : std::numpunct<char> {
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
  };
  const std::locale m_before;
};

/// "InitPlayer" has made the window, the picture, the effect object, the subscription and the worker.
class GivenPreparedPicture : public GivenEngine {
 protected:
  void SetUp() override {
    GivenEngine::SetUp();
    ASSERT_TRUE(Send("InitPlayer", {kPicture}));
    ASSERT_EQ(Result(), "1");
    kit::Begin();
  }
};

/// "StartPlayback" has initialised the library's display, too.
class GivenShownPicture : public GivenPreparedPicture {
 protected:
  void SetUp() override {
    GivenPreparedPicture::SetUp();
    ASSERT_TRUE(Send("StartPlayback"));
    ASSERT_EQ(Result(), "1");
    kit::Begin();
  }
};

#endif
