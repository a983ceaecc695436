// SPDX-License-Identifier: Apache-2.0
#include "simulator/tvsim/slideshow/PictureReport.h"

#include "simulator/rpc/JsonText.h"

namespace sim::tvsim {
namespace {

/// A started transition leaves the engine no picture to ask about.
bool IsSizeKnown(const std::string& size) {
  return size.find('*') != std::string::npos;
}

}  // namespace

std::string TextOf(const PictureReport& report) {
  std::string text = "[" + std::to_string(report.number) + "/" + std::to_string(report.count) + "] " + report.path;
  if (report.failure) {
    return text + "  NOT SHOWN: " + *report.failure;
  }
  text += "  shown in " + std::to_string(report.took.count()) + " ms";
  text += IsSizeKnown(report.size) ? "  " + report.size : "";
  return report.screenshot_failure ? text + "  NO SCREENSHOT: " + *report.screenshot_failure : text;
}

std::string JsonOf(const PictureReport& report) {
  rpc::ObjectWriter object;
  object.Add("picture", rpc::Quote(report.path))
      .Add("number", rpc::Number(static_cast<int64_t>(report.number)))
      .Add("shown", rpc::Boolean(!report.failure))
      .Add("milliseconds", rpc::Number(report.took.count()));
  if (report.failure) {
    object.Add("reason", rpc::Quote(*report.failure));
  }
  if (report.screenshot_failure) {
    object.Add("screenshotReason", rpc::Quote(*report.screenshot_failure));
  }
  if (IsSizeKnown(report.size)) {
    object.Add("size", rpc::Quote(report.size));
  }
  return object.Take().text;
}

}  // namespace sim::tvsim
