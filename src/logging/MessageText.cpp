#include "logging/MessageText.h"

#include <new>

namespace Quend::Framework::Logging {

bool MessageText::tryAppendLongText(std::string_view text) {
    try {
        if (longText.empty()) {
            longText.reserve(2 * (size + text.size()));
            longText.assign(buffer.data(), size);
            size = buffer.size() - 1;
        }
        longText.append(text);
        return true;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

std::ostringstream& MessageText::asStream() {
    if (!stream) {
        stream.emplace();
        stream->imbue(locale);
        *stream << (longText.empty() ? std::string_view(buffer.data(), size) : longText);
    }
    return *stream;
}

}  // namespace Quend::Framework::Logging
