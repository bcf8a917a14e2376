#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace xel::test {

/// Well-formed documents with everything in them that a delegate hears of, and what it does not.
class RandomXML {
 public:
  /// A number from 0 to less than the bound.
  using Below = std::function<std::size_t(std::size_t bound)>;

  explicit RandomXML(Below random) : random_(std::move(random)) {
    text = oneOf({"", "\xEF\xBB\xBF"}) +
           oneOf({"", "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n"}) + between() +
           oneOf({"", "<!DOCTYPE r>"}) + between();
    addElement(0);
    text += between();
  }

  std::string text;

 private:
  std::size_t below(std::size_t bound) { return random_(bound); }
  std::string oneOf(const std::vector<const char*>& choices) {
    return choices[below(choices.size())];
  }
  std::string between() { return oneOf({"", "\n", "<!-- & < é -->", "<?pi?>\r\n "}); }
  std::string reference() {
    return oneOf(
        {"&amp;", "&lt;", "&gt;", "&quot;", "&apos;", "&#38;", "&#xA;", "&#13;", "&#233;"});
  }
  std::string run() {
    std::string run;
    for (std::size_t left = 1 + below(below(8) ? 12 : 700); left > 0; --left) {
      run += oneOf({"x", "=", "'", "\"", ">", "/", ";", " ", "\t", "\n", "\r\n", "\r", "é", "😀"});
    }
    return run;
  }
  std::string attributes() {
    std::string attributes;
    for (const std::string name : {"d", "b", "a", "x", "c"}) {
      if (below(4)) continue;
      attributes += oneOf({" ", "\n "}) + name + oneOf({"=", " = "}) + "\"";
      for (std::size_t left = below(5); left > 0; --left) {
        attributes += below(2) ? reference() : oneOf({"v", " ", "\t", "\r\n", ">", "'", "é"});
      }
      attributes += '"';
    }
    return attributes + oneOf({"", " ", "\n"});
  }
  void addElement(int depth) {
    const std::string name = oneOf({"e", "Ad", "ns:e", "é", "_-.1"});
    text += "<" + name + attributes();
    if (below(6) == 0) {
      text += "/>";
      return;
    }
    text += ">";
    for (std::size_t left = below(8); left > 0; --left) {
      const std::size_t kind = below(depth < 5 ? 6 : 4);
      if (kind == 0) text += reference();
      if (kind == 1) text += "<![CDATA[" + oneOf({"", "&amp;<b>", run().c_str()}) + "]]]>";
      if (kind == 2) text += between();
      if (kind == 3) text += run();
      if (kind >= 4) addElement(depth + 1);
    }
    text += "</" + name + oneOf({"", " "}) + ">";
  }

  const Below random_;
};

}  // namespace xel::test
