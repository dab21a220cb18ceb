/// \file
// The sink providers that are asked when a channel is created, in the order of registration.
///
/// Guarded by the lock of LogManager. The registry owns no provider.
#pragma once

#include <vector>

#include "logging/LogSink.h"

namespace Quend::Framework::Logging {

using ProviderRegistry = std::vector<LogSinkProvider*>;

/// The one of the process. At unload it is emptied before logging is shut down, and stays in
/// place as an empty one: the shutdown still looks into it, finds nobody and removes nothing.
extern ProviderRegistry& providerRegistry;

}  // namespace Quend::Framework::Logging
