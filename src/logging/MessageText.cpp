#include "logging/MessageText.h"

#include <new>

namespace Quend::Framework::Logging {

bool MessageText::tryAppendLongText(std::string_view text) {
    if (isCut) {
        return false;
    }
    try {
        if (longText.empty()) {
            longText.reserve(2 * (size + text.size()));
            longText.assign(buffer.data(), size);
            closeBuffer();
        }
        longText.append(text);
        return true;
    } catch (const std::bad_alloc&) {
        cut();
        return false;
    }
}

std::ostringstream* MessageText::asStream() {
    if (!stream && !isCut) {
        try {
            stream.emplace(longText.empty() ? std::string(buffer.data(), size) : longText,
                           std::ios_base::ate);
            stream->imbue(locale);
        } catch (const std::bad_alloc&) {
            cut();
        }
    }
    return stream ? &*stream : nullptr;
}

void MessageText::cut() {
    closeBuffer();
    isCut = true;
}

}  // namespace Quend::Framework::Logging
