#include "serve/MediaStream.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "serve/MediaRecipe.h"
#include "serve/MediaTagger.h"

namespace xel::serve {
namespace {

constexpr std::size_t firstSegments = 3;
constexpr std::size_t windowSegments = 6;

const MediaPart& partOf(const PlannedBreak& planned, std::size_t ad) {
  const bool isPreroll = planned.key == prerollPlan().breaks[0].key;
  if (isPreroll) return MediaLibrary::part("preroll-" + std::to_string(ad + 1));
  const auto& parts = MediaLibrary::parts();
  return *std::find_if(parts.begin(), parts.end(), [&](const MediaPart& part) {
    return part.name.starts_with("ad-") && part.duration == planned.adDurations[ad];
  });
}

}  // namespace

MediaStream::MediaStream(std::shared_ptr<const MediaLibrary> library, const StreamPlan& plan,
                         bool isLive)
    : library_(std::move(library)), texts_(textsOf(plan)), isLive_(isLive) {
  const MediaPart& content = MediaLibrary::part("content");
  std::size_t contentSegment = 0;
  const auto addContentUntil = [&](double time) {
    while (end_ < time) {
      addPart(content, contentSegment, std::min(MediaLibrary::segmentSeconds, time - end_));
      contentSegment = (contentSegment + 1) % MediaLibrary::segmentCount(content);
    }
  };
  for (const PlannedBreak& planned : plan.breaks) {
    addContentUntil(planned.start);
    for (std::size_t ad = 0; ad < planned.adDurations.size(); ++ad) {
      addPart(partOf(planned, ad), 0, planned.adDurations[ad]);
    }
  }
  addContentUntil(plan.duration);
}

void MediaStream::addPart(const MediaPart& part, std::size_t first, double duration) {
  for (std::size_t i = first; duration > 0; ++i) {
    const double length = MediaLibrary::segmentDuration(part, i);
    pieces_.push_back({&part, i, end_, length});
    end_ += length;
    duration -= length;
  }
}

std::string MediaStream::masterPlaylist(const std::string& name,
                                        const std::vector<Rendition>& renditions) {
  std::string text = "#EXTM3U\n#EXT-X-VERSION:3\n";
  for (const Rendition rendition : renditions) {
    text += "#EXT-X-STREAM-INF:" + attributesOf(rendition) + "\n" + name + "/" + nameOf(rendition) +
            ".m3u8\n";
  }
  return text;
}

std::string MediaStream::playlist(Rendition rendition, double now) {
  if (!startedAt_) startedAt_ = now;
  const PlaylistWriter writer(playlistSegments(rendition), texts_);
  if (!isLive_) return writer.wholePlaylist();
  const std::size_t published = publishedCount(now);
  // Players skip a last segment that comes together with the end mark.
  const std::size_t told = std::exchange(told_[static_cast<std::size_t>(rendition)], published);
  return writer.playlist(published - std::min(published, windowSegments), published,
                         told == pieces_.size());
}

std::optional<std::string> MediaStream::segment(Rendition rendition, std::size_t index) const {
  const std::size_t end = isLive_ ? *std::max_element(told_.begin(), told_.end()) : pieces_.size();
  if (index >= end) return std::nullopt;
  const Piece& piece = pieces_[index];
  // The first frame of an audio segment begins a little after it.
  const double lead = rendition == Rendition::audio
                          ? MediaLibrary::audioStart(piece.index) -
                                static_cast<double>(piece.index) * MediaLibrary::segmentSeconds
                          : 0;
  std::vector<StreamText> texts;
  std::size_t earlierPackets = 0;
  for (const StreamText& text : texts_) {
    if (text.time < piece.start) earlierPackets += packetsOf(text);
    if (text.time >= piece.start && text.time < piece.start + piece.duration) {
      texts.push_back({text.time - piece.start - lead, text.value});
    }
  }
  const std::string bytes = library_->segment(*piece.part, rendition, piece.index);
  if (rendition != Rendition::audio) return taggedTransportStream(bytes, texts, earlierPackets);
  const double start = piece.part->clockStart + MediaLibrary::audioStart(piece.index);
  return taggedPackedAudio(bytes, static_cast<std::uint64_t>(std::llround(start * 90000)), texts);
}

double MediaStream::publishedUntil(double now) const {
  const std::size_t count = publishedCount(now);
  return count == 0 ? 0 : pieces_[count - 1].start + pieces_[count - 1].duration;
}

std::size_t MediaStream::publishedCount(double now) const {
  if (!isLive_) return pieces_.size();
  std::size_t count = std::min(firstSegments, pieces_.size());
  if (!startedAt_) return count;
  const double head = pieces_[count - 1].start + pieces_[count - 1].duration;
  while (count < pieces_.size() &&
         pieces_[count].start + pieces_[count].duration <= head + (now - *startedAt_)) {
    ++count;
  }
  return count;
}

std::vector<PlaylistSegment> MediaStream::playlistSegments(Rendition rendition) const {
  std::vector<PlaylistSegment> segments;
  const Piece* earlier = nullptr;
  for (const Piece& piece : pieces_) {
    const bool goesOn =
        !earlier || (earlier->part == piece.part && earlier->index + 1 == piece.index);
    segments.push_back({piece.duration,
                        std::string(nameOf(rendition)) + "-" + std::to_string(segments.size()) +
                            (rendition == Rendition::audio ? ".aac" : ".ts"),
                        !goesOn});
    earlier = &piece;
  }
  return segments;
}

}  // namespace xel::serve
