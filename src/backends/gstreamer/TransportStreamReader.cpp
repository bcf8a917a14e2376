#include "backends/gstreamer/TransportStreamReader.h"

#include <algorithm>
#include <utility>

#include "backends/gstreamer/ID3Frames.h"
#include "backends/gstreamer/PESHeader.h"
#include "backends/gstreamer/TimedTagReader.h"

namespace xel {
namespace {

constexpr std::uint16_t associationPID = 0;
/// A program has one; so many do no harm.
constexpr std::size_t mostTagStreams = 8;

/// Where packets begin again, or may begin if more bytes follow; the number of bytes if nowhere.
std::size_t findSync(std::span<const std::byte> bytes) {
  for (std::size_t at = 0;; ++at) {
    const auto rest = bytes.subspan(at);
    at += static_cast<std::size_t>(std::find(rest.begin(), rest.end(), TransportPacket::sync) -
                                   rest.begin());
    const auto next = at + TransportPacket::size;
    if (next >= bytes.size() || bytes[next] == TransportPacket::sync) return at;
  }
}

}  // namespace

TransportStreamReader::TransportStreamReader(double runStart) : runStart_(runStart) {
  assignRoles({});
}

std::size_t TransportStreamReader::take(std::span<const std::byte> bytes, const TagFound& found) {
  auto rest = bytes;
  while (true) {
    if (!isInSync_) {
      rest = rest.subspan(findSync(rest));
      isInSync_ = rest.size() > TransportPacket::size;
    }
    if (!isInSync_ || rest.size() < TransportPacket::size) return bytes.size() - rest.size();
    if (rest[0] != TransportPacket::sync) {
      isInSync_ = false;
      continue;
    }
    readPacket(rest.first<TransportPacket::size>(), found);
    rest = rest.subspan(TransportPacket::size);
  }
}

void TransportStreamReader::readPacket(TransportPacket::Bytes bytes, const TagFound& found) {
  const auto pid = TransportPacket::pidOf(bytes);
  switch (roles_[pid]) {
    case Role::none:
      return;
    case Role::programAssociation:
      return association_.add(TransportPacket(bytes), [&](auto each) { readAssociation(each); });
    case Role::programMap:
      return map_.add(TransportPacket(bytes), [&](auto each) { readMap(each); });
    case Role::audioOrVideo:
      if (!TransportPacket::startsUnitIn(bytes)) return;
      if (const TransportPacket packet(bytes); !packet.isDamaged) readMedia(packet.payload, found);
      return;
    case Role::timedID3:
      return tagStreams_[pid].add(TransportPacket(bytes), [&](std::uint64_t timestamp, auto tag) {
        readTag(timestamp, tag, found);
      });
  }
}

void TransportStreamReader::readAssociation(std::span<const std::byte> section) {
  const auto pid = programMapPID(section);
  if (!pid || pid == mapPID_) return;
  mapPID_ = pid;
  map_ = {};
  lastMap_.clear();
  assignRoles({});
}

void TransportStreamReader::readMap(std::span<const std::byte> section) {
  if (std::equal(section.begin(), section.end(), lastMap_.begin(), lastMap_.end())) return;
  const auto streams = programStreams(section);
  if (!streams) return;
  lastMap_.assign(section.begin(), section.end());
  assignRoles(*streams);
}

void TransportStreamReader::assignRoles(const std::vector<ProgramStream>& streams) {
  roles_.fill(Role::none);
  std::size_t tagStreams = 0;
  for (const auto& [pid, kind] : streams) {
    if (kind == ProgramStream::Kind::audioOrVideo) roles_[pid] = Role::audioOrVideo;
    if (kind == ProgramStream::Kind::timedID3 && ++tagStreams <= mostTagStreams) {
      roles_[pid] = Role::timedID3;
    }
  }
  if (mapPID_) roles_[*mapPID_] = Role::programMap;
  roles_[associationPID] = Role::programAssociation;
  std::erase_if(tagStreams_,
                [&](const auto& each) { return roles_[each.first] != Role::timedID3; });
}

void TransportStreamReader::readMedia(std::span<const std::byte> payload, const TagFound& found) {
  const auto header = PESHeader::read(payload);
  if (!header || !header->presentationTimestamp) return;
  const auto timestamp = header->decodingTimestamp.value_or(*header->presentationTimestamp);
  if (clock_.isAnchored()) return clock_.follow(timestamp);
  clock_.anchor(timestamp, runStart_);
  for (auto& each : std::exchange(waiting_, {})) {
    found({clock_.timeOf(each.timestamp), std::move(each.items)});
  }
}

void TransportStreamReader::readTag(std::uint64_t timestamp, std::span<const std::byte> tag,
                                    const TagFound& found) {
  auto items = ID3Frames::read(tag).texts;
  if (items.empty()) return;
  if (clock_.isAnchored()) {
    found({clock_.timeOf(timestamp), std::move(items)});
  } else if (waiting_.size() < mostWaitingTags) {
    waiting_.push_back({timestamp, std::move(items)});
  }
}

}  // namespace xel
