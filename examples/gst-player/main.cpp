// A player with a window: plays an ad-inserted stream, shows which ad is on and for how long, and
// takes a viewer who jumps over a break that he has not seen back to it first.
//
//   xel_gst_player HOST[:PORT] CONTENT-SOURCE-ID VIDEO-ID [CA-FILE]
//   xel_gst_player HOST[:PORT] ASSET-KEY --live [CA-FILE]
#include <algorithm>
#include <cmath>
#include <iostream>
#include <optional>
#include <set>
#include <utility>

#include <gst/gst.h>
#include <gtk/gtk.h>

#include <xel/gstreamer/GLibRunLoop.h>
#include <xel/gstreamer/GstMediaPlayer.h>
#include <xel/xel.h>

namespace {

/// Such as "1:07".
std::string clockText(double seconds) {
  const int whole = static_cast<int>(std::max(0.0, seconds));
  const std::string rest = std::to_string(whole % 60);
  return std::to_string(whole / 60) + (rest.size() < 2 ? ":0" : ":") + rest;
}

class Player final : public XELStreamManagerDelegate, public std::enable_shared_from_this<Player> {
 public:
  Player(GtkWidget* video, std::shared_ptr<xel::GstMediaPlayer> player)
      : player_(std::move(player)),
        manager_(XELStreamManager::initWithVideoDisplay(
            XELAVPlayerVideoDisplay::initWithAVPlayer(player_))) {
    build(video);
    loop_ = xel::Platform::current().mainRunLoop;
    timer_ = loop_->every(0.2, [this] { showTime(); });
  }
  ~Player() override { loop_->cancel(timer_); }

  void open(std::shared_ptr<XELStreamRequest> request) {
    manager_->setDelegate(weak_from_this());
    manager_->requestStream(std::move(request));
  }

  void streamManager_didInitializeStream(XELStreamManager&, const std::string&) override {}
  void streamManager_didReceiveError(XELStreamManager&,
                                     const std::shared_ptr<const xel::Error>& error) override {
    showBadge(error ? error->description : "The stream cannot be played");
  }

  void streamManager_adBreakDidStart(XELStreamManager&,
                                     const std::shared_ptr<XELAdBreakInfo>&) override {
    if (const auto cuepoint = manager_->previousCuepointForStreamTime(player_->currentTime() + 1)) {
      seenBreaks_.insert(cuepoint->startTime());
    }
    gtk_widget_set_sensitive(bar_, FALSE);
  }
  void streamManager_ad_didCountdownTo(XELStreamManager&, const std::shared_ptr<XELAd>& ad,
                                       double remaining) override {
    const auto& info = ad->adBreakInfo();
    const auto total = info ? info->totalAds() : 1;
    showBadge("Ad " + std::to_string(ad->adPosition()) + " of " + std::to_string(total) + " · " +
              clockText(std::ceil(remaining)));
  }
  void streamManager_adBreakDidEnd(XELStreamManager&,
                                   const std::shared_ptr<XELAdBreakInfo>&) override {
    showBadge("");
    gtk_widget_set_sensitive(bar_, TRUE);
  }
  void streamManager_didUpdateCuepoints(
      XELStreamManager&, const std::vector<std::shared_ptr<XELCuepoint>>& cuepoints) override {
    gtk_scale_clear_marks(GTK_SCALE(bar_));
    for (const auto& cuepoint : cuepoints) {
      gtk_scale_add_mark(GTK_SCALE(bar_), manager_->contentTimeForStreamTime(cuepoint->startTime()),
                         GTK_POS_TOP,
                         seenBreaks_.count(cuepoint->startTime()) != 0 ? "<small>✓</small>" : "▾");
    }
  }

 private:
  /// As a host would write it: an unseen break before the target comes first, the target after it.
  void jumpTo(double contentTime) {
    const double target = manager_->streamTimeForContentTime(contentTime);
    const auto cuepoint = manager_->previousCuepointForStreamTime(target);
    const bool isAhead = cuepoint && cuepoint->startTime() >= player_->currentTime();
    if (isAhead && seenBreaks_.count(cuepoint->startTime()) == 0) {
      heldJump_ = {cuepoint->endTime(), target};
      player_->seek(cuepoint->startTime());
    } else {
      player_->seek(target);
    }
  }

  void showBadge(const std::string& text) {
    gtk_label_set_text(GTK_LABEL(badge_), text.c_str());
    gtk_widget_set_visible(badge_, !text.empty());
  }

  void showTime() {
    const double time = player_->currentTime();
    if (std::isnan(time)) return;
    if (heldJump_ && time >= heldJump_->first) {
      player_->seek(std::exchange(heldJump_, std::nullopt)->second);
    }
    const double content = manager_->contentTimeForStreamTime(time);
    const auto duration = player_->duration();
    gtk_widget_set_visible(bar_, duration.has_value());
    if (duration) {
      const double end = manager_->contentTimeForStreamTime(*duration);
      gtk_range_set_range(GTK_RANGE(bar_), 0, std::max(end, 1.0));
      gtk_label_set_text(GTK_LABEL(clock_), (clockText(content) + " / " + clockText(end)).c_str());
    } else {
      gtk_label_set_text(GTK_LABEL(clock_), ("LIVE " + clockText(time)).c_str());
    }
    isShowingTime_ = true;
    gtk_range_set_value(GTK_RANGE(bar_), content);
    isShowingTime_ = false;
  }

  void togglePause() {
    player_->isPlaying() ? player_->pause() : player_->play();
    gtk_button_set_label(GTK_BUTTON(pause_), player_->isPlaying() ? "❚❚" : "▶");
  }

  void build(GtkWidget* video) {
    GtkWidget* const window = gtk_window_new(GTK_WINDOW_TOPLEVEL);
    gtk_window_set_title(GTK_WINDOW(window), "xel player");
    gtk_window_set_default_size(GTK_WINDOW(window), 640, 420);
    g_signal_connect(window, "destroy", G_CALLBACK(gtk_main_quit), nullptr);

    badge_ = gtk_label_new("");
    gtk_widget_set_name(badge_, "badge");
    gtk_widget_set_halign(badge_, GTK_ALIGN_START);
    gtk_widget_set_valign(badge_, GTK_ALIGN_START);
    gtk_widget_set_no_show_all(badge_, TRUE);
    GtkWidget* const picture = gtk_overlay_new();
    gtk_container_add(GTK_CONTAINER(picture), video);
    gtk_overlay_add_overlay(GTK_OVERLAY(picture), badge_);

    pause_ = gtk_button_new_with_label("❚❚");
    g_signal_connect_swapped(pause_, "clicked",
                             G_CALLBACK(+[](Player* self) { self->togglePause(); }), this);
    bar_ = gtk_scale_new_with_range(GTK_ORIENTATION_HORIZONTAL, 0, 1, 0.1);
    gtk_scale_set_draw_value(GTK_SCALE(bar_), FALSE);
    gtk_widget_set_hexpand(bar_, TRUE);
    g_signal_connect_swapped(bar_, "value-changed", G_CALLBACK(+[](Player* self) {
                               if (self->isShowingTime_) return;
                               self->jumpTo(gtk_range_get_value(GTK_RANGE(self->bar_)));
                             }),
                             this);
    clock_ = gtk_label_new("");

    GtkWidget* const controls = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 8);
    for (GtkWidget* const each : {pause_, bar_, clock_}) {
      gtk_container_add(GTK_CONTAINER(controls), each);
    }
    GtkWidget* const all = gtk_box_new(GTK_ORIENTATION_VERTICAL, 0);
    gtk_box_pack_start(GTK_BOX(all), picture, TRUE, TRUE, 0);
    gtk_box_pack_start(GTK_BOX(all), controls, FALSE, FALSE, 6);
    gtk_container_set_border_width(GTK_CONTAINER(controls), 6);
    gtk_container_add(GTK_CONTAINER(window), all);
    gtk_widget_show_all(window);
  }

  const std::shared_ptr<xel::GstMediaPlayer> player_;
  const std::shared_ptr<XELStreamManager> manager_;
  std::shared_ptr<xel::RunLoop> loop_;
  xel::RunLoop::TimerID timer_ = 0;
  GtkWidget *badge_, *pause_, *bar_, *clock_;
  bool isShowingTime_ = false;
  /// The start times of the breaks that the viewer has been through. The played flag of a cue point
  /// does not do: it is not set for a break that starts at a fraction of a second.
  std::set<double> seenBreaks_;
  /// The end of the break that came first, and where the viewer wanted to go. Stream time.
  std::optional<std::pair<double, double>> heldJump_;
};

void useBadgeStyle() {
  GtkCssProvider* const style = gtk_css_provider_new();
  gtk_css_provider_load_from_data(style,
                                  "#badge { background: rgba(0,0,0,0.75); color: #ffd54a;"
                                  " padding: 6px 12px; margin: 12px; font-weight: bold;"
                                  " border-radius: 4px; }",
                                  -1, nullptr);
  gtk_style_context_add_provider_for_screen(gdk_screen_get_default(), GTK_STYLE_PROVIDER(style),
                                            GTK_STYLE_PROVIDER_PRIORITY_APPLICATION);
  g_object_unref(style);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 4 || !gtk_init_check(&argc, &argv)) {
    std::cerr << "usage: xel_gst_player HOST[:PORT] CONTENT-SOURCE-ID VIDEO-ID [CA-FILE]\n"
                 "       xel_gst_player HOST[:PORT] ASSET-KEY --live [CA-FILE]\n"
                 "It needs a display.\n";
    return 2;
  }
  xel::DefaultPlatformOptions options;
  options.host.applicationIdentifier = "com.example.gst-player";
  options.services.liveHost = options.services.vodHost = argv[1];
  options.mainRunLoop = xel::makeGLibRunLoop();
  if (argc > 4) options.caFile = argv[4];
  xel::Platform::install(xel::Platform::makeDefault(options));

  gst_init(nullptr, nullptr);
  GstElement* const sink = gst_element_factory_make("gtksink", nullptr);
  if (!sink) {
    std::cerr << "gtksink is missing; on Debian it is in gstreamer1.0-gtk3\n";
    return 1;
  }
  GtkWidget* video = nullptr;
  g_object_get(sink, "widget", &video, nullptr);
  xel::GstMediaPlayerOptions playerOptions;
  playerOptions.videoSink = sink;
  playerOptions.caFile = options.caFile;
  const auto media = xel::makeGstMediaPlayer(playerOptions);
  if (!media) return 1;

  useBadgeStyle();
  const auto player = std::make_shared<Player>(video, media);
  if (std::string(argv[3]) == "--live") {
    const auto request = XELLiveStreamRequest::initWithAssetKey(argv[2]);
    request->setAttemptPreroll(true);
    player->open(request);
  } else {
    player->open(XELVODStreamRequest::initWithContentSourceID_videoID(argv[2], argv[3]));
  }
  gtk_main();
}
