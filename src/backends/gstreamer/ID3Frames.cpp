#include "backends/gstreamer/ID3Frames.h"

#include <algorithm>
#include <exception>
#include <memory>
#include <string>
#include <utility>

#include <taglib/id3v2frame.h>
#include <taglib/id3v2framefactory.h>
#include <taglib/id3v2header.h>
#include <taglib/id3v2synchdata.h>
#include <taglib/privateframe.h>
#include <taglib/textidentificationframe.h>

#include "backends/gstreamer/ID3Header.h"

namespace xel {
namespace {

namespace ID3v2 = TagLib::ID3v2;

/// Only so does the library let others at its frame headers.
struct FrameAccess : ID3v2::Frame {
  using Frame::Header;
};

/// Leaves the frames of an older version their identifiers.
class PlainFrameFactory final : public ID3v2::FrameFactory {
 protected:
  bool updateFrame(FrameAccess::Header* header) const override {
    return header->version() >= 3 || FrameFactory::updateFrame(header);
  }
};

/// The frames of a tag, without its header.
TagLib::ByteVector bodyOf(std::span<const std::byte> tag, const ID3v2::Header& header) {
  const auto bytes = tag.subspan(id3HeaderSize);
  const auto size = std::min<std::size_t>(bytes.size(), header.tagSize());
  TagLib::ByteVector body(reinterpret_cast<const char*>(bytes.data()), static_cast<unsigned>(size));
  const bool isV4 = header.majorVersion() >= 4;
  if (header.unsynchronisation() && !isV4) body = ID3v2::SynchData::decode(body);
  if (!header.extendedHeader()) return body;
  // Version 4 counts the size itself as well.
  const auto extended = isV4 ? ID3v2::SynchData::toUInt(body.mid(0, 4)) : body.toUInt(0, true) + 4;
  return extended < body.size() ? body.mid(extended) : TagLib::ByteVector();
}

std::optional<std::string> textOf(const ID3v2::TextIdentificationFrame& frame) {
  auto fields = frame.fieldList();
  if (frame.frameID() == "TXXX" && fields.size() > 1) {
    const auto description = fields.front();
    fields.erase(fields.begin());
    if (fields.toString("").isEmpty()) fields = description;
  }
  auto text = fields.toString("/").to8Bit(true);
  return text.empty() ? std::nullopt : std::optional(std::move(text));
}

void add(const ID3v2::Frame& frame, ID3Frames& frames) {
  if (const auto* text = dynamic_cast<const ID3v2::TextIdentificationFrame*>(&frame)) {
    const auto id = frame.frameID();
    if (id.at(0) == 'T') frames.texts.push_back({{id.begin(), id.end()}, textOf(*text)});
  } else if (const auto* data = dynamic_cast<const ID3v2::PrivateFrame*>(&frame)) {
    if (data->owner() != "com.apple.streaming.transportStreamTimestamp") return;
    const auto timestamp = data->data();
    if (timestamp.size() != sizeof(std::uint64_t)) return;
    frames.timestamp = static_cast<std::uint64_t>(timestamp.toLongLong());
  }
}

void readFrames(std::span<const std::byte> tag, ID3Frames& frames) {
  const ID3v2::Header header(
      TagLib::ByteVector(reinterpret_cast<const char*>(tag.data()), id3HeaderSize));
  const unsigned version = header.majorVersion();
  const unsigned headerSize = FrameAccess::Header::size(version);
  const PlainFrameFactory factory;
  TagLib::ByteVector rest = bodyOf(tag, header);
  while (rest.size() > headerSize && rest.at(0) != 0) {
    const FrameAccess::Header frameHeader(rest, version);
    if (frameHeader.frameSize() > rest.size() - headerSize) return;  // It is cut short.
    // Others may nest deeply, and compressed ones grow without limit.
    const bool isKnown = rest.at(0) == 'T' || rest.startsWith("PRIV");
    if (isKnown && !frameHeader.compression()) {
      const std::unique_ptr<ID3v2::Frame> frame(factory.createFrame(rest, &header));
      if (frame) add(*frame, frames);
    }
    rest = rest.mid(headerSize + frameHeader.frameSize());
  }
}

}  // namespace

ID3Frames ID3Frames::read(std::span<const std::byte> tag) {
  ID3Frames frames;
  try {
    if (tag.size() >= id3HeaderSize) readFrames(tag, frames);
  } catch (const std::exception&) {
    // What was read until then counts.
  }
  return frames;
}

}  // namespace xel
