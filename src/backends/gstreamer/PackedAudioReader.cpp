#include "backends/gstreamer/PackedAudioReader.h"

#include <algorithm>
#include <utility>

#include "backends/gstreamer/ADTSHeader.h"
#include "backends/gstreamer/ID3Frames.h"
#include "backends/gstreamer/ID3Header.h"
#include "backends/gstreamer/TimedTagReader.h"

namespace xel {
namespace {

/// So many bytes tell a tag as well as a frame.
constexpr std::size_t lookahead = std::max(id3HeaderSize, ADTSHeader::size);

bool isBegun(std::span<const std::byte> bytes) {
  return id3TagSize(bytes) || ADTSHeader::read(bytes);
}

/// Where a tag or a frame may begin next, after the first byte.
std::size_t nextCandidate(std::span<const std::byte> bytes) {
  const auto next = std::find_if(bytes.begin() + 1, bytes.end(), [](std::byte each) {
    return each == std::byte{'I'} || each == std::byte{0xFF};
  });
  return static_cast<std::size_t>(next - bytes.begin());
}

}  // namespace

std::size_t PackedAudioReader::take(std::span<const std::byte> bytes, const TagFound& found) {
  std::size_t at = 0;
  while (bytes.size() >= at + lookahead) {
    const auto rest = bytes.subspan(at);
    if (const auto size = id3TagSize(rest)) {
      if (*size <= largestTag) {
        if (rest.size() < *size) break;
        readTag(rest.first(*size), found);
      }
      isInSync_ = true;
      at += *size;
      continue;
    }
    const auto frame = ADTSHeader::read(rest);
    if (frame && !isInSync_) {
      // Other bytes look like a frame too; after a real one comes something that is known.
      if (rest.size() < frame->frameSize + lookahead) break;
      isInSync_ = isBegun(rest.subspan(frame->frameSize));
    } else if (!frame) {
      isInSync_ = false;
    }
    releaseWaiting(found);
    if (isInSync_) time_ += frame->duration;
    at += isInSync_ ? frame->frameSize : nextCandidate(rest);
  }
  return at;
}

void PackedAudioReader::readTag(std::span<const std::byte> tag, const TagFound& found) {
  auto frames = ID3Frames::read(tag);
  if (frames.timestamp) {
    if (!clock_.isAnchored()) clock_.anchor(*frames.timestamp, time_);
    time_ = clock_.timeOf(*frames.timestamp);
    clock_.follow(*frames.timestamp);
    releaseWaiting(found);
    if (!frames.texts.empty()) found({time_, std::move(frames.texts)});
  } else if (!frames.texts.empty() && waiting_.size() < mostWaitingTags) {
    waiting_.push_back(std::move(frames.texts));
  }
}

void PackedAudioReader::releaseWaiting(const TagFound& found) {
  if (waiting_.empty()) return;
  for (auto& each : std::exchange(waiting_, {})) found({time_, std::move(each)});
}

}  // namespace xel
