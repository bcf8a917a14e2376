#pragma once

#include <memory>

#include "xel/platform/Platform.h"

#include "simulation/trace/TraceWriter.h"

namespace xel::simulation {

// The members of a platform, each of which passes everything on to another and writes it down.

std::shared_ptr<HTTPClient> recordHTTP(std::shared_ptr<TraceWriter> writer,
                                       std::shared_ptr<HTTPClient> client);
/// Timers only: what is posted shows in what it does.
std::shared_ptr<RunLoop> recordRunLoop(std::shared_ptr<TraceWriter> writer,
                                       std::shared_ptr<RunLoop> loop);
/// The advertising identifier may change in a session, and then is another secret.
std::shared_ptr<Environment> recordEnvironment(std::shared_ptr<TraceWriter> writer,
                                               std::shared_ptr<Environment> environment);
std::shared_ptr<Log> recordLog(std::shared_ptr<TraceWriter> writer, std::shared_ptr<Log> log);

}  // namespace xel::simulation
