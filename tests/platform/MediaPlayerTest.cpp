#include <functional>
#include <utility>

#include "xel/platform/MediaPlayer.h"
#include "xel/simulation/ScriptedMediaPlayer.h"

namespace xel::test {
namespace {

using simulation::ScriptedMediaPlayer;

struct Observer final : MediaItemObserver, MediaItemEndObserver {
  explicit Observer(std::function<void(const char* context)> function)
      : onReport(std::move(function)) {}
  void observeValueForKeyPath_ofObject_change_context(std::string_view, MediaItem&,
                                                      const MediaItemChange&,
                                                      const void* context) override {
    onReport(static_cast<const char*>(context));
  }
  void playerItemDidFinishPlaying(const std::shared_ptr<MediaItem>&) override { onReport("end"); }
  std::function<void(const char* context)> onReport;
};

/// Two observers, of which the first does `inReport` once, in its next report.
struct MediaPlayerTest : testing::Test {
  std::string happened() { return std::exchange(journal, {}); }

  std::shared_ptr<ScriptedMediaPlayer> player = std::make_shared<ScriptedMediaPlayer>();
  std::shared_ptr<MediaItem> item = player->makeItem(player->makeAsset("u"));
  std::string journal;
  std::function<void()> inReport;
  std::shared_ptr<Observer> first = std::make_shared<Observer>([this](const char* context) {
    journal += std::string(context) + " ";
    if (const auto function = std::exchange(inReport, nullptr)) function();
  });
  std::shared_ptr<Observer> second = std::make_shared<Observer>(
      [this](const char* context) { journal += "second:" + std::string(context) + " "; });
};

TEST_F(MediaPlayerTest, ItemsReportOncePerRegistrationToWhoeverIsStillRegistered) {
  const auto report = [this] {
    player->items()[0]->setStatus(MediaItemStatus::unknown);
    return happened();
  };
  item->addObserver(first, kMediaItemStatus, "a");
  item->addObserver(first, kMediaItemStatus, "b");
  item->addObserver(first, kMediaItemTimedMetadata, "c");
  item->addObserver(second, kMediaItemStatus, "d");
  EXPECT_EQ(report(), "a b second:d ");
  EXPECT_TRUE(item->removeObserver(*first, kMediaItemStatus));
  inReport = [this] { item->addObserver(first, kMediaItemStatus, "e"); };
  EXPECT_EQ(report(), "a second:d ");
  inReport = [this] { item->removeObserver(*second, kMediaItemStatus); };
  EXPECT_EQ(report(), "a e ");
  EXPECT_FALSE(item->removeObserver(*second, kMediaItemStatus));
  inReport = [this] { first.reset(); };
  EXPECT_EQ(report(), "a ");
  EXPECT_EQ(report(), "");
}

TEST_F(MediaPlayerTest, PlayersReportTheEndOfItemsUntilAllRegistrationsAreTakenBack) {
  const auto report = [this] {
    player->endItem(item);
    return happened();
  };
  for (const auto& observer : {first, first, second}) player->addItemEndObserver(observer);
  EXPECT_EQ(report(), "end end second:end ");
  inReport = [this] { second.reset(); };
  EXPECT_EQ(report(), "end end ");
  inReport = [this] { player->removeItemEndObserver(*first); };
  EXPECT_EQ(report(), "end ");
  EXPECT_EQ(report(), "");
}

}  // namespace
}  // namespace xel::test
