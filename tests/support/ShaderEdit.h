#pragma once

#include <cstddef>
#include <string>

/// Changes shader texts on their way to GL, so that a test sees a filter run with a fault in it. The tests' linker sends
/// glShaderSource here (the list is in CMakeLists.txt); the product has no hook for it. One edit at a time.
class ShaderEdit {
public:
    enum class Stage { kVertex, kFragment };

    /// From here on `search` becomes `replacement` in each text of that stage.
    ShaderEdit(Stage stage, std::string search, std::string replacement);
    ShaderEdit(ShaderEdit const&) = delete;
    ShaderEdit& operator=(ShaderEdit const&) = delete;
    ~ShaderEdit();

    /// The text with every occurrence replaced; counts text and occurrences.
    std::string applied(Stage stage, std::string text);

    /// Texts of the stage that came by.
    size_t texts() const { return texts_; }
    /// Places that were replaced in them.
    size_t replacements() const { return replacements_; }

private:
    Stage stage_;
    std::string search_;
    std::string replacement_;
    size_t texts_ = 0;
    size_t replacements_ = 0;
};

/// How often `part`, which is not empty, stands in `text`.
size_t occurrences(std::string const& text, std::string const& part);
