// A host application that plays media.
#include <cmath>

#include <xel/gstreamer/GstMediaPlayer.h>
#include <xel/xel.h>

int main() {
  xel::GstMediaPlayerOptions options;
  options.output = xel::GstOutput::none;
  const auto player = xel::makeGstMediaPlayer(options);
  const auto display = XELAVPlayerVideoDisplay::initWithAVPlayer(player);
  return player && std::isnan(display->player()->currentTime()) ? 0 : 1;
}
