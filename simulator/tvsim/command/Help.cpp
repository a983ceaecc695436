// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <iostream>

#include "simulator/tvsim/Console.h"
#include "simulator/tvsim/command/Command.h"
#include "simulator/tvsim/control/ProtocolDocument.h"

namespace sim::tvsim {
namespace {

using Subs = std::vector<const CLI::App*>;

Subs SubcommandsOf(const CLI::App& root) {
  return root.get_subcommands([](const CLI::App*) { return true; });
}

/// The long options with their dashes.
std::vector<std::string> LongOptions(const CLI::App& app) {
  std::vector<std::string> names;
  for (const CLI::Option* option : app.get_options()) {
    for (const std::string& name : option->get_lnames()) {
      names.push_back("--" + name);
    }
  }
  return names;
}

std::string Joined(const std::vector<std::string>& words) {
  std::string text;
  for (const std::string& word : words) {
    text += (text.empty() ? "" : " ") + word;
  }
  return text;
}

std::string NamesOf(const Subs& subs) {
  std::vector<std::string> names;
  for (const CLI::App* sub : subs) {
    names.push_back(sub->get_name());
  }
  return Joined(names);
}

/// What may follow a subcommand besides options and files.
std::string WordsOf(const std::string& subcommand) {
  return subcommand == "state" ? "pause resume destroy" : subcommand == "help" ? "protocol man bash zsh" : "";
}

std::string BashCompletion(const CLI::App& root) {
  const Subs subs = SubcommandsOf(root);
  std::string text =
      "# bash completion of tvsim; put it where bash-completion looks, or: . <(tvsim help bash)\n_tvsim() {\n"
      "  local word=${COMP_WORDS[COMP_CWORD]} words=\"\"\n  if [ \"$COMP_CWORD\" = 1 ]; then\n    words=\"" +
      NamesOf(subs) + " --help --version\"\n  else\n    case ${COMP_WORDS[1]} in\n";
  for (const CLI::App* sub : subs) {
    const std::string own = WordsOf(sub->get_name());
    text += "      " + sub->get_name() + ") words=\"" + own + (own.empty() ? "" : " ") + Joined(LongOptions(*sub)) +
            "\" ;;\n";
  }
  return text +
         "    esac\n  fi\n  mapfile -t COMPREPLY < <(compgen -W \"$words\" -- \"$word\")\n"
         "  [ ${#COMPREPLY[@]} -gt 0 ] || mapfile -t COMPREPLY < <(compgen -f -- \"$word\")\n}\n"
         "complete -o filenames -F _tvsim tvsim\n";
}

/// Inside single quotes and square brackets of zsh's _arguments.
std::string ZshText(const std::string& text) {
  std::string safe;
  for (const char c : text) {
    if (c == '\'') {
      safe += "'\\''";
    } else if (c == '[' || c == ']' || c == ':') {
      (safe += '\\') += c;
    } else {
      safe += c == '\n' ? ' ' : c;
    }
  }
  return safe;
}

std::string ZshCompletion(const CLI::App& root) {
  std::string text =
      "#compdef tvsim\n# zsh completion of tvsim; put it as _tvsim into a folder of $fpath\n_tvsim() {\n"
      "  local -a subcommands=(\n";
  for (const CLI::App* sub : SubcommandsOf(root)) {
    text += "    '" + sub->get_name() + ":" + ZshText(sub->get_description()) + "'\n";
  }
  text +=
      "  )\n  if (( CURRENT == 2 )); then\n    _describe subcommand subcommands\n    return\n  fi\n  case $words[2] "
      "in\n";
  for (const CLI::App* sub : SubcommandsOf(root)) {
    text += "    " + sub->get_name() + ") _arguments";
    for (const CLI::Option* option : sub->get_options()) {
      for (const std::string& name : option->get_lnames()) {
        text += " '--" + name + "[" + ZshText(option->get_description()) + "]" +
                (option->get_items_expected_max() > 0 ? ":value:_files" : "") + "'";
      }
    }
    const std::string own = WordsOf(sub->get_name());
    text += (own.empty() ? " '*:file:_files'" : " '*:word:(" + own + ")'") + std::string(" ;;\n");
  }
  return text + "  esac\n}\n_tvsim \"$@\"\n";
}

std::string Roff(const std::string& text) {
  std::string safe;
  for (const char c : text) {
    safe += c == '\\' ? "\\e" : c == '-' ? "\\-" : std::string(1, c);
  }
  return (safe.starts_with('.') || safe.starts_with('\'') ? "\\&" : "") + safe;
}

std::string RoffOptions(const CLI::App& app) {
  std::string text;
  for (const CLI::Option* option : app.get_options()) {
    const std::string name = option->get_name(option->get_positional());
    const bool takes = option->get_items_expected_max() > 0 && !option->get_positional();
    text += ".TP\n.B " + Roff(name) + (takes ? " \\fR" + Roff(option->get_type_name()) : "") + "\n" +
            Roff(option->get_description()) + "\n";
    if (!option->get_default_str().empty()) {
      text += "Default: " + Roff(option->get_default_str()) + ".\n";
    }
  }
  return text;
}

std::string ManPage(const CLI::App& root) {
  std::string text = ".\\\" Made by tvsim help man\n.TH TVSIM 1 \"\" \"tvsim " TVSIM_VERSION
                     "\"\n.SH NAME\ntvsim \\- " +
                     Roff("a television on the desk") + "\n.SH SYNOPSIS\n.B tvsim\n.I SUBCOMMAND\n[\\fIOPTIONS\\fR]\n" +
                     ".SH DESCRIPTION\n" + Roff(root.get_description()) + "\n.SH SUBCOMMANDS\n";
  for (const CLI::App* sub : SubcommandsOf(root)) {
    text += ".SS tvsim " + sub->get_name() + "\n" + Roff(sub->get_description()) + ".\n" + RoffOptions(*sub);
  }
  text += ".SH EXIT STATUS\n" + Roff(root.get_footer()) + "\n";
  text +=
      ".SH FILES\n.TP\n.I $XDG_RUNTIME_DIR/tvsim/NAME\n" +
      Roff(
          "The folder of a session, for its owner alone: the control socket, the key store, the engine's log. "
          "/tmp/tvsim-UID/NAME where there is no XDG_RUNTIME_DIR.") +
      "\n.TP\n.I $XDG_STATE_HOME/tvsim/crash-TIME.txt\n" +
      Roff("What is known of an engine that crashed, the last ten; ~/.local/state where there is no XDG_STATE_HOME.") +
      "\n.SH ENVIRONMENT\n.TP\n.B OLM_LOG_FILE\n" + Roff("The file of the engine's log.") +
      "\n.TP\n.B OLM_LOG_LEVEL\n" + Roff("Filters it: 1 errors ... 4 everything.") + "\n";
  return text;
}

int Help(const CLI::App& root, const std::string& topic) {
  if (topic.empty()) {
    std::cout << root.help();
  } else if (topic == "protocol") {
    std::cout << ProtocolDocument();
  } else if (topic == "man") {
    std::cout << ManPage(root);
  } else {
    std::cout << (topic == "bash" ? BashCompletion(root) : ZshCompletion(root));
  }
  return std::cout.flush() ? kDone : kFailed;
}

}  // namespace

std::function<int()> ConfigureHelp(CLI::App& app) {
  auto topic = std::make_shared<std::string>();
  app.add_option("TOPIC", *topic,
                 "protocol: of a session's socket, in Markdown; man: the manual page; bash, zsh: completion")
      ->check(CLI::IsMember({"protocol", "man", "bash", "zsh"}));
  return [topic, &app] { return Help(*app.get_parent(), *topic); };
}

}  // namespace sim::tvsim
