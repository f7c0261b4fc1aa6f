#pragma once

#include <tiffio.h>

#include <array>
#include <cstdarg>
#include <cstdio>
#include <memory>

/// libtiff's last error about one file; warnings are dropped. It must outlive the file that was opened with its
/// options.
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
        TIFFOpenOptionsSetWarningHandlerExtR(options.get(), drop, nullptr);
        return options;
    }

    /// Empty if there was no error.
    char const* text() const { return text_.data(); }

private:
    [[gnu::format(printf, 4, 0)]] static int keep(TIFF*, void* message, char const*, char const* format,
                                                  va_list arguments) {
        auto& text = static_cast<TiffMessage*>(message)->text_;
        std::vsnprintf(text.data(), text.size(), format, arguments);
        return 1;
    }
    static int drop(TIFF*, void*, char const*, char const*, va_list) { return 1; }

    std::array<char, 256> text_{};
};
