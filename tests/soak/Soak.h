// Between the soak program and its two modules.
#pragma once

#include <atomic>

// What the modules did, counted by all threads at once.
struct Tally {
    std::atomic<long long> operations{0};
    std::atomic<long long> exceptions{0};  // all of them on purpose, and caught
    std::atomic<long long> objectsMade{0};
    std::atomic<long long> objectsDestroyed{0};
    std::atomic<long long> messagesLogged{0};  // to a channel with a sink
    std::atomic<long long> messagesWritten{0};
    std::atomic<long long> mistakes{0};  // anything that went otherwise than it must
};

// Exported by each module as `work`: a few hundred operations, from any number of threads.
using Work = void(Tally* tally);
