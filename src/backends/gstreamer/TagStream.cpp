#include "backends/gstreamer/TagStream.h"

#include <algorithm>

#include "backends/gstreamer/ID3Header.h"
#include "backends/gstreamer/PESHeader.h"
#include "backends/gstreamer/SegmentReader.h"

namespace xel {

void TagStream::add(const TransportPacket& packet, const Found& found) {
  if (packet.isDamaged) return drop();
  if (packet.payload.empty()) return;
  const auto place = order_.placeOf(packet);
  if (place == PacketOrder::Place::repeated) return;
  if (place == PacketOrder::Place::afterGap) drop();
  if (packet.startsUnit) {
    end(found);
    part_ = Part::header;
  }
  addBytes(packet.payload, found);
}

void TagStream::addBytes(std::span<const std::byte> bytes, const Found& found) {
  if (part_ == Part::none) return;
  left_.insert(left_.end(), bytes.begin(), bytes.end());
  std::size_t added = bytes.size();
  if (part_ == Part::header) {
    if (!readHeader()) return;
    added = left_.size();
  }
  if (bodySize_) {
    if (added > *bodySize_) left_.resize(left_.size() - (added - *bodySize_));
    *bodySize_ -= std::min(added, *bodySize_);
  }
  takeTags(found);
  if (bodySize_ == 0) end(found);
}

bool TagStream::readHeader() {
  const auto header = PESHeader::read(left_);
  if (!header) {
    if (left_.size() >= PESHeader::largest) drop();
    return false;
  }
  part_ = Part::body;
  timestamp_ = header->presentationTimestamp;
  bodySize_ = header->bodySize;
  left_.erase(left_.begin(), left_.begin() + static_cast<std::ptrdiff_t>(header->size));
  return true;
}

void TagStream::takeTags(const Found& found) {
  std::span<const std::byte> rest = left_;
  while (true) {
    rest = rest.subspan(findID3Tag(rest));
    const auto size = id3TagSize(rest);
    if (size > largestTag) return drop();
    if (!size || *size > rest.size()) break;
    if (timestamp_) found(*timestamp_, rest.first(*size));
    rest = rest.subspan(*size);
  }
  left_.erase(left_.begin(), left_.end() - static_cast<std::ptrdiff_t>(rest.size()));
}

void TagStream::end(const Found& found) {
  if (part_ == Part::body && timestamp_ && !left_.empty()) found(*timestamp_, left_);
  drop();
}

void TagStream::drop() {
  part_ = Part::none;
  left_.clear();
}

}  // namespace xel
