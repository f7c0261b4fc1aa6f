#pragma once

#include "host/image/Complaint.h"

#include <tiffio.h>

#include <array>
#include <cstdarg>
#include <cstdio>
#include <memory>

/// libtiff's last error and last warning about one file, without warnings that mean no damage. It must outlive the file
/// that was opened with its options.
class TiffMessage {
public:
    using Options = std::unique_ptr<TIFFOpenOptions, decltype(&TIFFOpenOptionsFree)>;

    TiffMessage() = default;
    TiffMessage(TiffMessage const&) = delete;
    TiffMessage& operator=(TiffMessage const&) = delete;

    /// Options for opening a file.
    Options options() {
        Options options(TIFFOpenOptionsAlloc(), &TIFFOpenOptionsFree);
        TIFFOpenOptionsSetErrorHandlerExtR(options.get(), keep, this);
        TIFFOpenOptionsSetWarningHandlerExtR(options.get(), keepWarning, this);
        return options;
    }

    /// Empty if there was no error.
    char const* text() const { return text_.data(); }
    /// Empty if there was no warning. Decoders warn of damaged data, and fill the rest with grey.
    char const* warning() const { return warning_.data(); }
    /// Forgets both.
    void clear() { text_[0] = warning_[0] = 0; }

private:
    [[gnu::format(printf, 4, 0)]] static int keep(TIFF*, void* message, char const*, char const* format,
                                                  va_list arguments) {
        auto& text = static_cast<TiffMessage*>(message)->text_;
        std::vsnprintf(text.data(), text.size(), format, arguments);
        return 1;
    }
    [[gnu::format(printf, 4, 0)]] static int keepWarning(TIFF*, void* message, char const*, char const* format,
                                                         va_list arguments) {
        Text text{};
        std::vsnprintf(text.data(), text.size(), format, arguments);
        if (!complaint::isHarmless(text.data())) static_cast<TiffMessage*>(message)->warning_ = text;
        return 1;
    }

    using Text = std::array<char, 256>;
    Text text_{};
    Text warning_{};
};
