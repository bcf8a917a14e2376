#include "backends/gstreamer/EventMessageReader.h"

#include <algorithm>
#include <limits>
#include <string_view>
#include <utility>

#include "backends/gstreamer/BigEndian.h"
#include "backends/gstreamer/ID3Frames.h"
#include "backends/gstreamer/ID3Header.h"
#include "backends/gstreamer/MP4Box.h"
#include "backends/gstreamer/TimedTagReader.h"

namespace xel {
namespace {

using Bytes = std::span<const std::byte>;

constexpr std::string_view id3Scheme = "https://aomedia.org/emsg/ID3";
/// What has to be seen in one; larger boxes of these types are passed over.
constexpr std::size_t largestBox = largestTag;

/// Takes the fields of a box one after the other; there is an end to them, but nothing is thrown.
class Fields {
 public:
  explicit Fields(Bytes bytes) : rest_(bytes) {}

  bool isComplete() const { return isComplete_; }
  Bytes rest() const { return rest_; }
  void skip(std::size_t size) { take(size); }
  /// 0 where nothing is left.
  template <std::size_t Size>
  std::uint64_t number() {
    const auto bytes = take(Size);
    return bytes.empty() ? 0 : bigEndian(bytes.template first<Size>());
  }
  std::uint64_t number(bool isLong) { return isLong ? number<8>() : number<4>(); }
  /// A text that ends with a zero.
  std::string_view text() {
    const auto end = std::find(rest_.begin(), rest_.end(), std::byte{0});
    const auto size = static_cast<std::size_t>(end - rest_.begin());
    const auto bytes = take(size + 1);
    return bytes.empty() ? std::string_view()
                         : std::string_view(reinterpret_cast<const char*>(bytes.data()), size);
  }

 private:
  Bytes take(std::size_t size) {
    isComplete_ = isComplete_ && size <= rest_.size();
    if (!isComplete_) return {};
    const auto bytes = rest_.first(size);
    rest_ = rest_.subspan(size);
    return bytes;
  }

  Bytes rest_;
  bool isComplete_ = true;
};

/// What follows the version, the flags and the two times with which some headers begin.
std::uint32_t numberAfterTimes(Bytes header) {
  Fields fields(header);
  const bool isLong = fields.number<1>() == 1;
  fields.skip(isLong ? 3 + 2 * 8 : 3 + 2 * 4);
  return static_cast<std::uint32_t>(fields.number<4>());
}

}  // namespace

std::size_t EventMessageReader::take(Bytes bytes, const TagFound& found) {
  constexpr std::size_t all = std::numeric_limits<std::size_t>::max();
  std::size_t at = 0;
  while (at < bytes.size()) {
    const auto rest = bytes.subspan(at);
    const auto box = MP4Box::read(rest);
    if (!box) return rest.size() < MP4Box::largestHeader ? at : all;  // Where would the next begin?
    const bool isRead = box->type == boxType("moov") || box->type == boxType("moof") ||
                        box->type == boxType("emsg");
    if (isRead && box->size <= largestBox) {
      if (rest.size() < box->size) return at;
      const auto body = rest.first(box->size).subspan(box->headerSize);
      if (box->type == boxType("moov")) readMovie(body);
      if (box->type == boxType("moof")) readFragment(body, found);
      if (box->type == boxType("emsg")) readMessage(body);
    }
    if (box->size > all - at) return all;
    at += box->size;
  }
  return at;
}

void EventMessageReader::readMovie(Bytes body) {
  timescales_.clear();
  forEachBox(body, [&](std::uint32_t type, Bytes track) {
    if (type != boxType("trak")) return;
    std::uint32_t id = 0;
    std::uint32_t timescale = 0;
    forEachBox(track, [&](std::uint32_t partType, Bytes part) {
      if (partType == boxType("tkhd")) id = numberAfterTimes(part);
      if (partType != boxType("mdia")) return;
      forEachBox(part, [&](std::uint32_t headerType, Bytes header) {
        if (headerType == boxType("mdhd")) timescale = numberAfterTimes(header);
      });
    });
    if (timescale != 0) timescales_[id] = timescale;
  });
}

void EventMessageReader::readFragment(Bytes body, const TagFound& found) {
  std::optional<double> start;
  forEachBox(body, [&](std::uint32_t type, Bytes track) {
    if (type == boxType("traf") && !start) start = startOfTrackFragment(track);
  });
  if (!start) return;
  if (!firstFragment_) firstFragment_ = start;
  for (auto& each : std::exchange(waiting_, {})) {
    const double time = each.isRelative ? *start + each.time : each.time;
    found({runStart_ + (time - *firstFragment_), std::move(each.items)});
  }
}

std::optional<double> EventMessageReader::startOfTrackFragment(Bytes body) const {
  std::uint32_t track = 0;
  std::optional<std::uint64_t> start;
  forEachBox(body, [&](std::uint32_t type, Bytes part) {
    Fields fields(part);
    const auto version = fields.number<1>();
    fields.skip(3);
    if (type == boxType("tfhd")) track = static_cast<std::uint32_t>(fields.number<4>());
    if (type == boxType("tfdt")) start = fields.number(version == 1);
  });
  const auto timescale = timescales_.find(track);
  if (!start || timescale == timescales_.end()) return std::nullopt;
  return static_cast<double>(*start) / timescale->second;
}

void EventMessageReader::readMessage(Bytes body) {
  Fields fields(body);
  const auto version = fields.number<1>();
  fields.skip(3);
  std::string_view scheme;
  const auto readScheme = [&] {
    scheme = fields.text();
    fields.text();  // Its value.
  };
  if (version == 0) readScheme();
  const auto timescale = fields.number<4>();
  const auto time = static_cast<double>(fields.number(version == 1));
  fields.skip(8);  // The duration and an identifier.
  if (version == 1) readScheme();
  if (!fields.isComplete() || scheme != id3Scheme || timescale == 0) return;

  auto rest = fields.rest();
  while (const auto size = id3TagSize(rest)) {
    const auto tag = rest.first(std::min(*size, rest.size()));
    auto items = ID3Frames::read(tag).texts;
    if (!items.empty() && waiting_.size() < mostWaitingTags) {
      waiting_.push_back({time / static_cast<double>(timescale), version == 0, std::move(items)});
    }
    rest = rest.subspan(tag.size());
  }
}

}  // namespace xel
