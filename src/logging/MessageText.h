#pragma once

#include <array>
#include <charconv>
#include <cmath>
#include <concepts>
#include <ios>
#include <locale>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

namespace Quend::Framework::Logging {

/// The text of a message while it is being built: what a std::ostringstream made at the same time
/// would hold after the same insertions, without the cost of one for the usual messages.
///
/// Text, integers and finite numbers with a point are appended to a buffer of this object, and to
/// a string where the buffer ends. The first insertion of anything else (a manipulator, a type with
/// an inserter of its own) makes the stream, which takes over the text so far and all that follows.
///
/// Threading: an object belongs to one thread. No stream is kept for each thread: it would have to
/// be destroyed by threads that outlive the library.
/// On failure: if memory runs out, that insertion and all later ones are lost, and nothing is
/// thrown. What was inserted before stays.
// NOLINTNEXTLINE(cppcoreguidelines-pro-type-member-init): the buffer is filled as it is used
class MessageText {
 public:
    /// Inserts as a std::ostringstream does.
    template <typename T>
    void insert(T&& value) {
        if (!stream && tryAppend(value)) {
            return;
        }
        if (std::ostringstream* const out = asStream()) {
            // NOLINTNEXTLINE(bugprone-unintended-char-ostream-output): as any stream does
            *out << std::forward<T>(value);
        }
    }

    /// Ends the text and returns it, zero-terminated; valid as long as the object. Text behind a
    /// NUL is not seen.
    /// Requires: called once, after the last insertion. It takes the text out of the stream.
    const char* finish() {
        if (stream) {
            longText = std::move(*stream).str();
        }
        if (stream || !longText.empty()) {
            return longText.c_str();
        }
        buffer[size] = '\0';
        return buffer.data();
    }

 private:
    template <typename T, typename... Types>
    static constexpr bool isOneOf = (std::is_same_v<T, Types> || ...);

    /// Only for these very types: one that merely converts to them may have its own inserter.
    template <typename T>
    bool tryAppend(const T& value) {
        if constexpr (isOneOf<T, short, unsigned short, int, unsigned, long, unsigned long,
                              long long, unsigned long long>) {
            return tryAppendNumber(value);
        } else if constexpr (isOneOf<T, float, double>) {
            // The format of a stream. Its text for infinity and NaN depends on the platform.
            return std::isfinite(value) && tryAppendNumber(value, std::chars_format::general, 6);
        } else if constexpr (std::is_same_v<T, char>) {
            return tryAppendText({&value, 1});
        } else if constexpr (isOneOf<std::decay_t<T>, const char*, char*>) {
            const char* const text = value;
            return text != nullptr && tryAppendText(text);
        } else if constexpr (isOneOf<T, std::string, std::string_view>) {
            return tryAppendText(value);
        } else {
            return false;
        }
    }

    template <typename T, typename... Format>
    bool tryAppendNumber(T value, Format... format) {
        if (locale != std::locale::classic()) {  // which may group digits or have another point
            return false;
        }
        const auto [next, error] = std::to_chars(buffer.data() + size, end(), value, format...);
        if (error == std::errc()) {
            size = static_cast<std::size_t>(next - buffer.data());
            return true;
        }
        std::array<char, 24> digits;  // NOLINT(cppcoreguidelines-pro-type-member-init)
        char* const digitsEnd = digits.data() + digits.size();
        return tryAppendLongText(
            {digits.data(), std::to_chars(digits.data(), digitsEnd, value, format...).ptr});
    }

    bool tryAppendText(std::string_view text) {
        if (text.size() >= buffer.size() - size) {
            return tryAppendLongText(text);
        }
        text.copy(buffer.data() + size, text.size());
        size += text.size();
        return true;
    }

    bool tryAppendLongText(std::string_view text);

    /// Makes the stream, unless it is there. Returns null if memory runs out or has done so before.
    std::ostringstream* asStream();

    /// Ends the text where it is, for want of memory.
    void cut();

    /// Ends the text in the buffer. No later text fits behind it, so all of it takes the long way.
    void closeBuffer() {
        buffer[size] = '\0';
        size = buffer.size() - 1;
    }

    char* end() { return buffer.data() + buffer.size() - 1; }  // keeps room for the NUL

    std::array<char, 256> buffer;  // the first `size` bytes count, and room for a NUL
    std::size_t size = 0;
    std::string longText;                      // all of the text, if it has outgrown the buffer
    std::optional<std::ostringstream> stream;  // all of the text, if it exists
    bool isCut = false;                        // memory has run out: nothing more is inserted
    std::locale locale;  // the global one of the time when the message was begun
};

}  // namespace Quend::Framework::Logging
