#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "xel/display/XELVideoDisplay.h"
#include "xel/platform/Error.h"
#include "xel/platform/Export.h"
#include "xel/platform/JSONValue.h"

namespace xel::simulation {

/// A display that plays nothing and reports what the test tells it to.
///
/// Make it with `std::make_shared`. It keeps itself alive during its reports, so a delegate may
/// let go of it. Threads: main run loop.
class XEL_EXPORT ScriptedDisplay final : public XELVideoDisplay,
                                         public std::enable_shared_from_this<ScriptedDisplay> {
 public:
  struct Load {
    std::string url;
    std::vector<JSONValue> subtitles;
  };

  ScriptedDisplay();
  ~ScriptedDisplay() override;

  /// Every load, in order.
  const std::vector<Load>& loads() const noexcept { return loads_; }

  void reportReady();
  /// @param time seconds of stream time.
  void reportProgress(double time);
  /// Reports progress at `from`, `from + step`, `from + 2 * step` and so on up to `to`, which is
  /// reported too when it is a step. Seconds; times are computed, not summed.
  void play(double from, double to, double step = 0.2);
  void reportMetadata(const TimedMetadata& metadata);
  /// Reports one text under the key "TXXX".
  void reportTXXX(std::string_view text);
  /// @param error may be null.
  void reportFailure(const std::shared_ptr<const Error>& error);

  void loadURL_withSubtitles(const std::string& url,
                             const std::vector<JSONValue>& subtitles) override;
  std::shared_ptr<XELVideoDisplayDelegate> delegate() const override { return delegate_.lock(); }
  void setDelegate(std::weak_ptr<XELVideoDisplayDelegate> delegate) override;

 private:
  std::vector<Load> loads_;
  std::weak_ptr<XELVideoDisplayDelegate> delegate_;
};

}  // namespace xel::simulation
