#include "manual/ManualPage.h"

#include <algorithm>
#include <cctype>
#include <sstream>
#include <string_view>

#include "manual/OptionText.h"

namespace xel::manual {
namespace {

/// The text without a meaning to troff, also at the start of a line.
std::string escaped(std::string_view text) {
  std::string plain;
  for (const char character : text) {
    if (character == '\\') {
      plain += "\\e";
    } else if (character == '-') {
      plain += "\\-";
    } else if (character == '~') {
      plain += "\\(ti";
    } else if (character == '^') {
      plain += "\\(ha";
    } else {
      plain += character;
    }
  }
  const bool isControl = plain.starts_with('.') || plain.starts_with('\'');
  return isControl ? "\\&" + plain : plain;
}

std::string bold(std::string_view text) { return "\\fB" + escaped(text) + "\\fR"; }
std::string italic(std::string_view text) { return "\\fI" + escaped(text) + "\\fR"; }

std::string upperCased(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](unsigned char character) { return std::toupper(character); });
  return text;
}

/// The summary as part of a line; a name that it begins with keeps its case.
std::string phraseOf(const CLI::App& command) {
  auto summary = summaryOf(command);
  const bool isWord = summary.size() > 1 && std::islower(static_cast<unsigned char>(summary[1]));
  if (isWord) summary[0] = static_cast<char>(std::tolower(static_cast<unsigned char>(summary[0])));
  return summary;
}

/// Such as "Exit status:".
bool isHeading(const std::string& line) {
  constexpr std::size_t longest = 30;
  return line.size() <= longest && line.ends_with(':') && line[0] != ' ';
}

/// Where the first section of a footer begins.
std::size_t firstSection(const std::string& footer) {
  std::size_t start = 0;
  while (start < footer.size()) {
    const auto end = std::min(footer.find('\n', start), footer.size());
    if (isHeading(footer.substr(start, end - start))) return start;
    start = end + 1;
  }
  return footer.size();
}

/// Writes the texts of a description or footer as paragraphs, labels and sections.
class ProseWriter {
 public:
  explicit ProseWriter(std::string& page) : page_(page) {}

  void write(const std::string& prose) {
    std::istringstream lines(prose);
    for (std::string line; std::getline(lines, line);) writeLine(line);
    endExample();
  }

 private:
  void writeLine(const std::string& line) {
    const auto indent = std::min(line.find_first_not_of(' '), line.size());
    const auto text = line.substr(indent);
    if (text.empty()) {
      isParagraphOver_ = true;
    } else if (isHeading(line)) {
      endExample();
      const auto title = text.substr(0, text.size() - 1);
      page_ += ".SH " + escaped(upperCased(title)) + "\n";
      isExample_ = title.starts_with("Example");
      if (isExample_) page_ += ".nf\n";
      isParagraphOver_ = isLabelled_ = false;
    } else if (isExample_ && indent > 0) {
      page_ += escaped(std::string(indent - std::min<std::size_t>(indent, 2), ' ') + text) + "\n";
    } else {
      endExample();
      writeProse(indent, text);
    }
  }

  void writeProse(std::size_t indent, const std::string& text) {
    const auto gap = text.find("  ");
    const bool isLabel = indent > 0 && indent <= 4 && gap != std::string::npos;
    const bool continuesLabel = isLabelled_ && indent > 4;
    if (isLabel) {
      page_ += ".TP\n" + bold(text.substr(0, gap)) + "\n";
      page_ += escaped(text.substr(text.find_first_not_of(' ', gap))) + "\n";
    } else {
      if (!continuesLabel && (isParagraphOver_ || isLabelled_)) page_ += ".PP\n";
      page_ += escaped(text) + "\n";
    }
    isLabelled_ = isLabel || continuesLabel;
    isParagraphOver_ = false;
  }

  void endExample() {
    if (isExample_) page_ += ".fi\n";
    isExample_ = false;
  }

  std::string& page_;
  bool isExample_ = false;
  bool isLabelled_ = false;
  bool isParagraphOver_ = false;
};

/// Lines that were broken for the help are one text in a page.
std::string flowing(std::string text) {
  std::replace(text.begin(), text.end(), '\n', ' ');
  return text;
}

void writeOption(const OptionText& option, std::string& page) {
  page += ".TP\n";
  for (const auto& name : option.names) {
    if (&name != &option.names.front()) page += ", ";
    page += option.isPositional ? italic(name) : bold(name);
  }
  if (!option.valueName.empty()) page += " " + italic(option.valueName);
  if (option.isRepeatable) page += " ...";
  page += "\n" + escaped(flowing(option.description));
  page += option.isRequired && !option.isPositional ? " (required)\n" : "\n";
}

bool isSame(const OptionText& one, const OptionText& other) {
  return one.names == other.names && one.valueName == other.valueName &&
         one.description == other.description;
}

bool has(const std::vector<OptionText>& options, const OptionText& option) {
  return std::any_of(options.begin(), options.end(),
                     [&option](const auto& each) { return isSame(each, option); });
}

/// The options that all the commands have.
std::vector<OptionText> commonOptions(const std::vector<const CLI::App*>& commands) {
  auto common = optionsOf(*commands.front());
  for (const auto* command : commands) {
    const auto options = optionsOf(*command);
    std::erase_if(common, [&options](const auto& option) { return !has(options, option); });
  }
  return common;
}

void writeOptions(const CLI::App& command, const std::string& path, std::string& page) {
  page += ".SH OPTIONS\n";
  const auto commands = commandsOf(command);
  if (commands.empty()) {
    for (const auto& option : optionsOf(command)) writeOption(option, page);
    return;
  }
  const auto common = commonOptions(commands);
  for (const auto* each : commands) {
    page += ".SS " + escaped(path + " " + each->get_name()) + "\n";
    for (const auto& option : optionsOf(*each)) {
      if (!has(common, option)) writeOption(option, page);
    }
  }
  page += ".SS Each of them\n";
  for (const auto& option : common) writeOption(option, page);
}

void writeSynopsis(const CLI::App& command, const std::string& path, std::string& page) {
  const auto commands = commandsOf(command);
  for (const auto* each : commands) writeSynopsis(*each, path + " " + each->get_name(), page);
  if (!commands.empty()) return;
  page += ".br\n" + bold(path) + " [" + italic("OPTIONS") + "]";
  for (const auto& option : optionsOf(command)) {
    if (!option.isPositional) continue;
    const auto text = italic(option.names[0]) + (option.isRepeatable ? "..." : "");
    page += option.isRequired ? " " + text : " [" + text + "]";
  }
  page += "\n";
}

void writeCommands(const std::vector<const CLI::App*>& commands, bool havePages,
                   std::string& page) {
  if (commands.empty()) return;
  page += ".SH COMMANDS\n";
  for (const auto* each : commands) {
    page += ".TP\n" + bold(each->get_name()) + "\n" + escaped(phraseOf(*each));
    page += havePages ? "; see " + bold("xel-" + each->get_name()) + "(1)\n" : "\n";
  }
}

std::string headOf(const std::string& name, const CLI::App& command, const std::string& version) {
  return ".TH " + escaped(upperCased(name)) + " 1 \"\" \"xel " + escaped(version) +
         "\" \"User Commands\"\n.SH NAME\n" + escaped(name) + " \\- " + escaped(phraseOf(command)) +
         "\n.SH SYNOPSIS\n";
}

ManualPage pageOf(const CLI::App& program, const CLI::App& command, const std::string& version) {
  const auto path = program.get_name() + " " + command.get_name();
  ManualPage page = {program.get_name() + "-" + command.get_name(), {}};
  page.text = headOf(page.name, command, version);
  writeSynopsis(command, path, page.text);

  // What stands before the footer's first section describes the command.
  const auto footer = command.get_footer();
  const auto start = firstSection(footer);
  page.text += ".SH DESCRIPTION\n";
  ProseWriter prose(page.text);
  const auto description = command.get_description();
  const auto details = description.substr(std::min(description.find('\n'), description.size()));
  prose.write(summaryOf(command) + "." + details + "\n\n" + footer.substr(0, start));
  writeCommands(commandsOf(command), false, page.text);
  writeOptions(command, path, page.text);
  prose.write(footer.substr(start));
  page.text += ".SH SEE ALSO\n" + bold(program.get_name()) + "(1)\n";
  return page;
}

ManualPage pageOf(const CLI::App& program, const std::string& version) {
  ManualPage page = {program.get_name(), {}};
  page.text = headOf(page.name, program, version);
  page.text += bold(page.name) + " " + italic("COMMAND") + " [" + italic("OPTIONS") + "]\n";
  writeCommands(commandsOf(program), true, page.text);
  page.text += ".SH OPTIONS\n";
  for (const auto& option : optionsOf(program)) writeOption(option, page.text);
  ProseWriter(page.text).write(program.get_footer());
  return page;
}

}  // namespace

std::vector<ManualPage> manualPages(const CLI::App& program, const std::string& version) {
  std::vector<ManualPage> pages = {pageOf(program, version)};
  for (const auto* command : commandsOf(program))
    pages.push_back(pageOf(program, *command, version));
  return pages;
}

}  // namespace xel::manual
