#include "tests/support/ShaderEdit.h"

#include "gles3renderbackend/Gl.h"

#include <stdexcept>
#include <utility>

namespace {

ShaderEdit*& current() {
    static ShaderEdit* edit = nullptr;
    return edit;
}

std::string joined(GLsizei count, GLchar const* const* strings, GLint const* lengths) {
    std::string text;
    for (GLsizei i = 0; i < count; ++i) {
        if (lengths == nullptr || lengths[i] < 0)
            text += strings[i];
        else
            text.append(strings[i], static_cast<size_t>(lengths[i]));
    }
    return text;
}

ShaderEdit::Stage stageOf(GLuint shader) {
    GLint type = 0;
    glGetShaderiv(shader, GL_SHADER_TYPE, &type);
    return type == GL_VERTEX_SHADER ? ShaderEdit::Stage::kVertex : ShaderEdit::Stage::kFragment;
}

ShaderEdit::Rewriting replacing(std::string const& search, std::string const& replacement) {
    return [=](std::string& text) {
        size_t count = 0;
        for (size_t at = text.find(search); at != std::string::npos; at = text.find(search, at + replacement.size())) {
            text.replace(at, search.size(), replacement);
            ++count;
        }
        return count;
    };
}

} // namespace

size_t occurrences(std::string const& text, std::string const& part) {
    size_t count = 0;
    for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + part.size()))
        ++count;
    return count;
}

ShaderEdit::ShaderEdit(Stage stage, std::string const& search, std::string const& replacement)
    : ShaderEdit(stage, replacing(search, replacement)) {
    if (search.empty()) throw std::invalid_argument("nothing to search for");
}

ShaderEdit::ShaderEdit(Stage stage, Rewriting rewriting) : stage_(stage), rewriting_(std::move(rewriting)) {
    if (current() != nullptr) throw std::logic_error("one edit at a time");
    current() = this;
}

ShaderEdit::~ShaderEdit() {
    current() = nullptr;
}

std::string ShaderEdit::applied(Stage stage, std::string text) {
    if (stage != stage_) return text;
    ++texts_;
    replacements_ += rewriting_(text);
    return text;
}

// The linker redirects each call of glShaderSource to __wrap_glShaderSource and demands these names.
// NOLINTBEGIN(bugprone-reserved-identifier,readability-identifier-naming)
extern "C" {

void __real_glShaderSource(GLuint shader, GLsizei count, GLchar const* const* strings, GLint const* lengths);

void __wrap_glShaderSource(GLuint shader, GLsizei count, GLchar const* const* strings, GLint const* lengths) {
    if (current() == nullptr) {
        __real_glShaderSource(shader, count, strings, lengths);
        return;
    }
    std::string const text = current()->applied(stageOf(shader), joined(count, strings, lengths));
    GLchar const* const edited = text.c_str();
    __real_glShaderSource(shader, 1, &edited, nullptr);
}
}
// NOLINTEND(bugprone-reserved-identifier,readability-identifier-naming)
