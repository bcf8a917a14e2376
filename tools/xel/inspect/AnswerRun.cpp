#include "inspect/ClientPlatform.h"
#include "inspect/ClientRuns.h"

namespace xel::inspect {
namespace {

/// Lets time pass until the document has been asked for again.
std::optional<double> pollingPeriod(const ClientPlatform& platform) {
  const auto& requests = platform.server().requests();
  const auto before = requests.size();
  constexpr double longest = 1e9;
  for (double step = 0.001; requests.size() == before && step < longest; step *= 2) {
    if (platform.loop().timerCount() == 0) return std::nullopt;
    platform.loop().advance(step);
  }
  if (requests.size() == before) return std::nullopt;
  return requests[before].time - requests[before - 1].time;
}

}  // namespace

AnswerView runAnswer(const std::string& answer, const ClientFacts& facts) {
  const ClientPlatform platform(facts);
  platform.answerNext(answer);
  // With it, the tag "end" completes the break of a pre-roll.
  platform.server().answerOtherDocuments(
      {200, R"({"tags":{"end":{"type":"complete","ad":"any"}}})"});
  const ClientSession session(platform);

  AnswerView view;
  for (const auto& heard : session.delegate->events()) {
    if (heard.name == "didInitializeStream") view.streamID = heard.streamID;
    if (heard.error) view.error = heard.error->description;
  }
  const auto& requests = platform.server().requests();
  if (requests.size() > 1) {
    view.documentURL = requests[1].request.url;
    view.pollingPeriod = pollingPeriod(platform);
  }
  session.display->reportTXXX("end");
  view.loads = session.display->loads();
  return view;
}

}  // namespace xel::inspect
