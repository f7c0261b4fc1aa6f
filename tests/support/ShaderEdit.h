#pragma once

#include <cstddef>
#include <functional>
#include <string>

/// Changes shader texts on their way to GL, so that a test can run a filter with a fault in it. The tests' linker
/// redirects glShaderSource to this class (CMakeLists.txt has the list); the product has no hook for it. One edit at a
/// time.
class ShaderEdit {
public:
    enum class Stage { kVertex, kFragment };

    /// Changes a text and returns the number of replacements.
    using Rewriting = std::function<size_t(std::string& text)>;

    /// From now on `search` becomes `replacement` in each text of that stage.
    ShaderEdit(Stage stage, std::string const& search, std::string const& replacement);
    /// From now on each text of that stage is rewritten.
    ShaderEdit(Stage stage, Rewriting rewriting);
    ShaderEdit(ShaderEdit const&) = delete;
    ShaderEdit& operator=(ShaderEdit const&) = delete;
    ~ShaderEdit();

    /// The text after all replacements; counts texts and replacements.
    std::string applied(Stage stage, std::string text);

    /// Number of texts of the stage so far.
    size_t texts() const { return texts_; }
    /// Number of replacements in them.
    size_t replacements() const { return replacements_; }

private:
    Stage stage_;
    Rewriting rewriting_;
    size_t texts_ = 0;
    size_t replacements_ = 0;
};

/// Number of occurrences of `part`, which is not empty, in `text`.
size_t occurrences(std::string const& text, std::string const& part);
