#pragma once

#include <vector>

#include "logging/LogSink.h"

namespace Quend::Framework::Logging {

/// The sink providers in the order of registration, which are asked when a channel is created.
///
/// Threading: guarded by LogManager's lock.
/// Ownership: LogManager owns the providers.
using ProviderRegistry = std::vector<LogSinkProvider*>;

/// The process-wide one. It is emptied at unload before logging shuts down, and stays in place: the
/// shutdown still searches it.
extern ProviderRegistry& providerRegistry;

}  // namespace Quend::Framework::Logging
