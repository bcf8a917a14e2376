#include "manual/BashCompletion.h"

#include <vector>

#include "manual/OptionText.h"

namespace xel::manual {
namespace {

constexpr auto scriptStart =
    R"sh(# Completes the command lines of @ in bash. Made from the program's own description of them.

_@_files() {
  compopt -o filenames 2>/dev/null
  mapfile -t COMPREPLY < <(compgen "$1" -- "$2")
}

_@() {
  local current=${COMP_WORDS[COMP_CWORD]} command=@ option='' words='' i word
  # "--option=value" comes as three words.
  [[ $current == '=' ]] && current=''
  COMPREPLY=()
  for ((i = 1; i < COMP_CWORD; i++)); do
    word=${COMP_WORDS[i]}
    if [[ $word == '=' ]]; then
      continue
    elif [[ $option ]]; then
      option=''
      continue
    fi
    case "$command $word" in
)sh";

constexpr auto scriptOptions = R"sh(    esac
  done
  if [[ $option ]]; then
    case "$command $option" in
)sh";

constexpr auto scriptNames = R"sh(    esac
  elif [[ $current == -* ]]; then
    case $command in
)sh";

constexpr auto scriptCommands = R"sh(    esac
  else
    case $command in
)sh";

constexpr auto scriptEnd = R"sh(    esac
  fi
  mapfile -t COMPREPLY < <(compgen -W "$words" -- "$current")
}

complete -F _@ @
)sh";

std::string joined(const std::vector<std::string>& words) {
  std::string text;
  for (const auto& word : words) text += (text.empty() ? "" : " ") + word;
  return text;
}

std::string branch(const std::vector<std::string>& patterns, const std::string& action) {
  if (patterns.empty()) return {};
  std::string text;
  for (const auto& pattern : patterns) text += (text.empty() ? "'" : " | '") + pattern + "'";
  return "      " + text + ") " + action + " ;;\n";
}

/// What the script knows of the program, gathered from its commands.
class Gatherer {
 public:
  explicit Gatherer(const CLI::App& program) : program_(program.get_name()) {
    gather(program, program_);
  }

  std::string script() const {
    auto text = scriptStart + branch(commands_, "command=\"$command $word\"") +
                branch(options_, "option=$word") + scriptOptions + values_ +
                branch(files_, files("-f")) + branch(folders_, files("-d")) + scriptNames + names_ +
                scriptCommands + next_ + branch(filesNext_, files("-f")) + scriptEnd;
    for (auto at = text.find('@'); at != std::string::npos; at = text.find('@', at)) {
      text.replace(at, 1, program_);
    }
    return text;
  }

 private:
  static std::string files(const std::string& kind) {
    return "_@_files " + kind + " \"$current\"; return";
  }

  void gather(const CLI::App& command, const std::string& path) {
    std::vector<std::string> names;
    bool takesFiles = false;
    for (const auto& option : optionsOf(command)) {
      takesFiles = takesFiles || option.isPositional;
      if (option.isPositional) continue;
      for (const auto& name : option.names) {
        names.push_back(name);
        gatherValue(option, path, name);
      }
    }
    names_ += branch({path}, "words='" + joined(names) + "'");
    if (takesFiles) filesNext_.push_back(path);

    std::vector<std::string> commands;
    for (const auto* each : commandsOf(command)) {
      const auto below = path + " " + each->get_name();
      commands.push_back(each->get_name());
      commands_.push_back(below);
      gather(*each, below);
    }
    if (!commands.empty()) next_ += branch({path}, "words='" + joined(commands) + "'");
  }

  void gatherValue(const OptionText& option, const std::string& command, const std::string& name) {
    if (option.value == ValueKind::none) return;
    const auto path = command + " " + name;
    options_.push_back(path);
    if (option.value == ValueKind::choice) {
      values_ += branch({path}, "words='" + joined(option.choices) + "'");
    } else if (option.value == ValueKind::file) {
      files_.push_back(path);
    } else if (option.value == ValueKind::folder) {
      folders_.push_back(path);
    }
  }

  const std::string program_;
  std::vector<std::string> commands_;
  std::vector<std::string> options_;
  std::vector<std::string> files_;
  std::vector<std::string> folders_;
  std::vector<std::string> filesNext_;
  std::string values_;
  std::string names_;
  std::string next_;
};

}  // namespace

std::string bashCompletion(const CLI::App& program) { return Gatherer(program).script(); }

}  // namespace xel::manual
