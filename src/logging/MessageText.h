/// \file
// The text of a message while it is being built: what a std::ostringstream would hold after the
/// same insertions, without the cost of making one for the usual message of text and integers.
///
/// Those are put into a buffer of this object. Anything else (a manipulator, a number with a
/// point, a type with an inserter of its own) and what does not fit makes the stream, which takes
/// over what is there already and everything that follows.
///
/// Threading: an object belongs to one thread. Nothing here outlives it: a stream kept for each
/// thread would have to be destroyed by threads that outlive the library.
#pragma once

#include <array>
#include <charconv>
#include <locale>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>
#include <type_traits>

namespace Quend::Framework::Logging {

// NOLINTNEXTLINE(cppcoreguidelines-pro-type-member-init): the buffer is filled as it is used
class MessageText {
 public:
    template <typename T>
    void insert(const T& value) {
        if (!stream && isAppended(value)) {
            return;
        }
        asStream() << value;
    }

    /// Zero-terminated; valid until the object is used again. Text behind a NUL is not seen.
    const char* get() {
        if (stream) {
            whole = std::move(*stream).str();
            return whole.c_str();
        }
        buffer[size] = '\0';
        return buffer.data();
    }

 private:
    template <typename T>
    static constexpr bool isInteger =
        std::is_same_v<T, short> || std::is_same_v<T, unsigned short> || std::is_same_v<T, int> ||
        std::is_same_v<T, unsigned> || std::is_same_v<T, long> ||
        std::is_same_v<T, unsigned long> || std::is_same_v<T, long long> ||
        std::is_same_v<T, unsigned long long>;

    template <typename T>
    bool isAppended(const T& value) {
        if constexpr (isInteger<T>) {
            return isIntegerAppended(value);
        } else if constexpr (std::is_same_v<T, char>) {
            return isTextAppended(std::string_view(&value, 1));
        } else if constexpr (std::is_convertible_v<const T&, const char*>) {
            const char* const text = value;
            return text != nullptr && isTextAppended(text);
        } else if constexpr (std::is_convertible_v<const T&, std::string_view>) {
            return isTextAppended(value);
        } else {
            return false;
        }
    }

    template <typename T>
    bool isIntegerAppended(T value) {
        // Another global locale may group the digits.
        if (std::locale() != std::locale::classic()) {
            return false;
        }
        char* const end = buffer.data() + buffer.size() - 1;
        const auto [next, error] = std::to_chars(buffer.data() + size, end, value);
        if (error != std::errc()) {
            return false;
        }
        size = static_cast<std::size_t>(next - buffer.data());
        return true;
    }

    bool isTextAppended(std::string_view text) {
        if (text.size() >= buffer.size() - size) {
            return false;
        }
        text.copy(buffer.data() + size, text.size());
        size += text.size();
        return true;
    }

    std::ostringstream& asStream() {
        if (!stream) {
            stream.emplace();
            *stream << std::string_view(buffer.data(), size);
        }
        return *stream;
    }

    std::array<char, 256> buffer;  // the first `size` bytes count, and room for a NUL
    std::size_t size = 0;
    std::optional<std::ostringstream> stream;
    std::string whole;
};

}  // namespace Quend::Framework::Logging
