#pragma once

#include <cstddef>
#include <functional>
#include <string>

/// Changes shader texts on their way to GL, so that a test sees a filter run with a fault in it. The tests' linker
/// sends glShaderSource here (the list is in CMakeLists.txt); the product has no hook for it. One edit at a time.
class ShaderEdit {
public:
    enum class Stage { kVertex, kFragment };

    /// A text, whose places to change it replaces and counts.
    using Rewriting = std::function<size_t(std::string& text)>;

    /// From here on `search` becomes `replacement` in each text of that stage.
    ShaderEdit(Stage stage, std::string const& search, std::string const& replacement);
    /// From here on each text of that stage is rewritten.
    ShaderEdit(Stage stage, Rewriting rewriting);
    ShaderEdit(ShaderEdit const&) = delete;
    ShaderEdit& operator=(ShaderEdit const&) = delete;
    ~ShaderEdit();

    /// The text with every place replaced; counts texts and places.
    std::string applied(Stage stage, std::string text);

    /// Texts of the stage that came by.
    size_t texts() const { return texts_; }
    /// Places that were replaced in them.
    size_t replacements() const { return replacements_; }

private:
    Stage stage_;
    Rewriting rewriting_;
    size_t texts_ = 0;
    size_t replacements_ = 0;
};

/// How often `part`, which is not empty, stands in `text`.
size_t occurrences(std::string const& text, std::string const& part);
