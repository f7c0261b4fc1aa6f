// Shaders, programs and uniforms of the recording GL. Nothing is compiled: a program has the variables that its sources
// declare, or those that a test scripted.
#include "tests/support/RecordingGlState.h"

#include <algorithm>
#include <cctype>
#include <cstring>

using recording::Enum;
using recording::findProgram;
using recording::Pointer;
using recording::record;
using recording::state;

namespace {

using Actives = std::vector<RecordingGl::Active>;

RecordingGl::Shader* findShader(GLuint name) {
    auto const found = state().shaders.find(name);
    if (found != state().shaders.end()) return &found->second;
    state().raise(GL_INVALID_VALUE, "not a living shader");
    return nullptr;
}

GLint withTerminator(size_t length) {
    return length == 0 ? 0 : static_cast<GLint>(length + 1);
}

void copyText(std::string const& text, GLsizei size, GLsizei* length, GLchar* target) {
    auto const room = size > 0 ? static_cast<size_t>(size) - 1 : 0;
    auto const count = std::min(room, text.size());
    if (size > 0) {
        std::memcpy(target, text.data(), count);
        target[count] = '\0';
    }
    if (length != nullptr) *length = static_cast<GLsizei>(count);
}

GLenum typeOf(std::string const& glsl) {
    static std::map<std::string, GLenum> const types{
        {"float", GL_FLOAT},         {"vec2", GL_FLOAT_VEC2}, {"vec3", GL_FLOAT_VEC3},
        {"vec4", GL_FLOAT_VEC4},     {"int", GL_INT},         {"ivec2", GL_INT_VEC2},
        {"ivec3", GL_INT_VEC3},      {"ivec4", GL_INT_VEC4},  {"bool", GL_BOOL},
        {"mat2", GL_FLOAT_MAT2},     {"mat3", GL_FLOAT_MAT3}, {"mat4", GL_FLOAT_MAT4},
        {"sampler2D", GL_SAMPLER_2D}};
    auto const found = types.find(glsl);
    return found == types.end() ? GL_FLOAT : found->second;
}

bool isWord(char c) {
    return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_';
}

// The end of the comment or blank at this position; the position itself if there is none.
size_t skipBlank(std::string const& source, size_t at) {
    auto const line = source.compare(at, 2, "//") == 0;
    if (line || source.compare(at, 2, "/*") == 0) {
        auto const end = source.find(line ? "\n" : "*/", at + 2);
        return end == std::string::npos ? source.size() : end + (line ? 1 : 2);
    }
    return std::isspace(static_cast<unsigned char>(source[at])) != 0 ? at + 1 : at;
}

// Words, numbers and single characters, without comments.
std::vector<std::string> tokens(std::string const& source) {
    std::vector<std::string> result;
    for (size_t at = 0; at < source.size();) {
        auto const next = skipBlank(source, at);
        if (next != at) {
            at = next;
            continue;
        }
        auto end = at + 1;
        while (isWord(source[at]) && end < source.size() && isWord(source[end]))
            ++end;
        result.push_back(source.substr(at, end - at));
        at = end;
    }
    return result;
}

bool contains(Actives const& list, std::string const& name) {
    return std::any_of(list.begin(), list.end(), [&](auto const& active) { return active.name == name; });
}

// Parses "a_one, a_two[3];" after a type, from the token at `at`.
void appendNames(std::vector<std::string> const& words, size_t at, GLenum type, Actives& list) {
    for (; at < words.size() && words[at] != ";"; ++at) {
        if (!isWord(words[at].front())) continue;
        auto const array = at + 2 < words.size() && words[at + 1] == "[";
        auto const name = words[at] + (array ? "[0]" : "");
        GLint const size = array ? std::stoi(words[at + 2]) : 1;
        if (array) at += 3;
        if (contains(list, name)) continue; // declared in the other stage as well
        GLint const location = list.empty() ? 0 : list.back().location + list.back().size;
        list.push_back({name, location, type, size});
    }
}

// Appends the stage's declarations with this keyword to the list.
void appendDeclared(std::string const& source, std::string const& keyword, Actives& list) {
    auto const words = tokens(source);
    for (size_t i = 0; i + 3 < words.size(); ++i) {
        if (words[i] != keyword) continue;
        auto const precision = words[i + 1] == "lowp" || words[i + 1] == "mediump" || words[i + 1] == "highp";
        auto const type = i + (precision ? 2 : 1);
        appendNames(words, type + 1, typeOf(words[type]), list);
    }
}

Actives declared(RecordingGl::Program const& program, std::string const& keyword) {
    Actives list;
    for (auto const stage : {GL_VERTEX_SHADER, GL_FRAGMENT_SHADER})
        for (auto const name : program.attached)
            if (state().shaders.at(name).type == static_cast<GLenum>(stage))
                appendDeclared(state().shaders.at(name).source, keyword, list);
    return list;
}

void applyPlaces(Actives& uniforms) {
    for (auto const& [name, location] : state().places) {
        auto const byName = [&, wanted = name](auto const& active) { return active.name == wanted; };
        auto const moved = std::find_if(uniforms.begin(), uniforms.end(), byName);
        if (moved == uniforms.end()) continue;
        auto const byLocation = [&, wanted = location](auto const& active) { return active.location == wanted; };
        auto const there = std::find_if(uniforms.begin(), uniforms.end(), byLocation);
        if (there != uniforms.end()) there->location = moved->location;
        moved->location = location;
    }
}

// A refused query answers 0; one that is out of memory leaves what is there.
void answerNothing(GLint* value) {
    if (state().verdict == recording::Verdict::Refused) *value = 0;
}

GLint locationOf(Actives const& list, std::string const& name) {
    for (auto const& active : list)
        if (active.name == name || active.name == name + "[0]") return active.location;
    return -1;
}

GLint longest(Actives const& list) {
    size_t result = 0;
    for (auto const& active : list)
        result = std::max(result, active.name.size());
    return withTerminator(result);
}

void getActive(Actives const& list, GLuint index, GLsizei room, GLsizei* length, GLint* size, GLenum* type,
               GLchar* name) {
    if (index >= list.size()) return state().raise(GL_INVALID_VALUE, "no such index");
    *size = list[index].size;
    *type = list[index].type;
    copyText(list[index].name, room, length, name);
}

void releaseShader(GLuint name) {
    auto const& programs = state().programs;
    auto const attached = std::any_of(programs.begin(), programs.end(), [&](auto const& entry) {
        auto const& list = entry.second.attached;
        return std::find(list.begin(), list.end(), name) != list.end();
    });
    if (!attached && state().shaders.at(name).deletePending) state().shaders.erase(name);
}

} // namespace

RecordingGl::Program* recording::findProgram(GLuint name) {
    auto const found = state().programs.find(name);
    if (found != state().programs.end()) return &found->second;
    state().raise(GL_INVALID_VALUE, "not a living program");
    return nullptr;
}

GLuint glCreateShader(GLenum type) {
    auto const recorded = record("glCreateShader", Enum{type});
    if (state().fails("glCreateShader")) return 0;
    auto const name = state().nextName++;
    state().shaders[name].type = type;
    return name;
}

void glDeleteShader(GLuint shader) {
    auto const recorded = record("glDeleteShader", shader);
    if (shader == 0) return;
    auto* const found = findShader(shader);
    if (found == nullptr) return;
    if (found->deletePending) state().raise(GL_NO_ERROR, "deleted twice");
    found->deletePending = true;
    releaseShader(shader);
}

GLboolean glIsShader(GLuint shader) {
    auto const recorded = record("glIsShader", shader);
    return state().shaders.count(shader) != 0 ? GL_TRUE : GL_FALSE;
}

void glShaderSource(GLuint shader, GLsizei count, GLchar const* const* strings, GLint const* lengths) {
    auto const recorded = record("glShaderSource", shader, count, Pointer{strings}, Pointer{lengths});
    if (state().fails("glShaderSource")) return;
    auto* const found = findShader(shader);
    if (found == nullptr) return;
    found->source.clear();
    for (GLsizei i = 0; i < count; ++i) {
        if (lengths != nullptr && lengths[i] >= 0)
            found->source.append(strings[i], static_cast<size_t>(lengths[i]));
        else
            found->source.append(strings[i]);
    }
}

void glCompileShader(GLuint shader) {
    auto const recorded = record("glCompileShader", shader);
    if (state().fails("glCompileShader")) return;
    auto* const found = findShader(shader);
    if (found == nullptr) return;
    auto& failures = state().compileFailures[found->type];
    found->compiled = failures.empty();
    if (found->compiled) return;
    found->infoLog = failures.front();
    failures.pop_front();
}

void glGetShaderiv(GLuint shader, GLenum name, GLint* value) {
    auto const recorded = record("glGetShaderiv", shader, Enum{name}, Pointer{value});
    if (state().fails("glGetShaderiv")) return answerNothing(value);
    auto const* const found = findShader(shader);
    if (found == nullptr) return;
    switch (name) {
    case GL_COMPILE_STATUS:
        *value = found->compiled ? GL_TRUE : GL_FALSE;
        return;
    case GL_INFO_LOG_LENGTH:
        *value = withTerminator(found->infoLog.size());
        return;
    case GL_SHADER_SOURCE_LENGTH:
        *value = withTerminator(found->source.size());
        return;
    case GL_SHADER_TYPE:
        *value = static_cast<GLint>(found->type);
        return;
    case GL_DELETE_STATUS:
        *value = found->deletePending ? GL_TRUE : GL_FALSE;
        return;
    default:
        return state().raise(GL_INVALID_ENUM, "no such property");
    }
}

void glGetShaderInfoLog(GLuint shader, GLsizei size, GLsizei* length, GLchar* log) {
    auto const recorded = record("glGetShaderInfoLog", shader, size, Pointer{length}, Pointer{log});
    if (state().fails("glGetShaderInfoLog")) return;
    if (auto const* const found = findShader(shader)) copyText(found->infoLog, size, length, log);
}

GLuint glCreateProgram() {
    auto const recorded = record("glCreateProgram");
    if (state().fails("glCreateProgram")) return 0;
    auto const name = state().nextName++;
    state().programs[name] = {};
    return name;
}

void glDeleteProgram(GLuint program) {
    auto const recorded = record("glDeleteProgram", program);
    if (program == 0) return;
    auto* const found = findProgram(program);
    if (found == nullptr) return;
    auto const attached = found->attached;
    state().programs.erase(program);
    for (auto const shader : attached)
        releaseShader(shader);
    if (state().currentProgram == program) state().currentProgram = 0;
}

GLboolean glIsProgram(GLuint program) {
    auto const recorded = record("glIsProgram", program);
    return state().programs.count(program) != 0 ? GL_TRUE : GL_FALSE;
}

void glAttachShader(GLuint program, GLuint shader) {
    auto const recorded = record("glAttachShader", program, shader);
    if (state().fails("glAttachShader")) return;
    auto* const found = findProgram(program);
    if (found == nullptr || findShader(shader) == nullptr) return;
    found->attached.push_back(shader);
}

void glDetachShader(GLuint program, GLuint shader) {
    auto const recorded = record("glDetachShader", program, shader);
    auto* const found = findProgram(program);
    if (found == nullptr || findShader(shader) == nullptr) return;
    auto const place = std::find(found->attached.begin(), found->attached.end(), shader);
    if (place == found->attached.end()) return state().raise(GL_INVALID_OPERATION, "the shader is not attached");
    found->attached.erase(place);
    releaseShader(shader);
}

void glBindAttribLocation(GLuint program, GLuint index, GLchar const* name) {
    auto const recorded = record("glBindAttribLocation", program, index, name);
    findProgram(program);
}

void glLinkProgram(GLuint program) {
    auto const recorded = record("glLinkProgram", program);
    if (state().fails("glLinkProgram")) return;
    auto* const found = findProgram(program);
    if (found == nullptr) return;
    auto& s = state();
    found->linked = s.linkFailures.empty();
    if (!found->linked) {
        found->infoLog = s.linkFailures.front();
        s.linkFailures.pop_front();
        return;
    }
    for (GLuint const shader : found->attached)
        found->sources[s.shaders.at(shader).type] = s.shaders.at(shader).source;
    if (s.programScripts.empty()) {
        found->attributes = declared(*found, "attribute");
        found->uniforms = declared(*found, "uniform");
    } else {
        found->attributes = s.programScripts.front().attributes;
        found->uniforms = s.programScripts.front().uniforms;
        s.programScripts.pop_front();
    }
    applyPlaces(found->uniforms);
}

void glGetProgramiv(GLuint program, GLenum name, GLint* value) {
    auto const recorded = record("glGetProgramiv", program, Enum{name}, Pointer{value});
    if (state().fails("glGetProgramiv")) return answerNothing(value);
    auto const* const found = findProgram(program);
    if (found == nullptr) return;
    switch (name) {
    case GL_LINK_STATUS:
        *value = found->linked ? GL_TRUE : GL_FALSE;
        return;
    case GL_INFO_LOG_LENGTH:
        *value = withTerminator(found->infoLog.size());
        return;
    case GL_ATTACHED_SHADERS:
        *value = static_cast<GLint>(found->attached.size());
        return;
    case GL_ACTIVE_ATTRIBUTES:
        *value = static_cast<GLint>(found->attributes.size());
        return;
    case GL_ACTIVE_ATTRIBUTE_MAX_LENGTH:
        *value = longest(found->attributes);
        return;
    case GL_ACTIVE_UNIFORMS:
        *value = static_cast<GLint>(found->uniforms.size());
        return;
    case GL_ACTIVE_UNIFORM_MAX_LENGTH:
        *value = longest(found->uniforms);
        return;
    default:
        return state().raise(GL_INVALID_ENUM, "no such property");
    }
}

void glGetProgramInfoLog(GLuint program, GLsizei size, GLsizei* length, GLchar* log) {
    auto const recorded = record("glGetProgramInfoLog", program, size, Pointer{length}, Pointer{log});
    if (state().fails("glGetProgramInfoLog")) return;
    if (auto const* const found = findProgram(program)) copyText(found->infoLog, size, length, log);
}

void glGetActiveAttrib(GLuint program, GLuint index, GLsizei room, GLsizei* length, GLint* size, GLenum* type,
                       GLchar* name) {
    auto const recorded =
        record("glGetActiveAttrib", program, index, room, Pointer{length}, Pointer{size}, Pointer{type}, Pointer{name});
    if (state().fails("glGetActiveAttrib")) return;
    if (auto const* const found = findProgram(program))
        getActive(found->attributes, index, room, length, size, type, name);
}

void glGetActiveUniform(GLuint program, GLuint index, GLsizei room, GLsizei* length, GLint* size, GLenum* type,
                        GLchar* name) {
    auto const recorded = record("glGetActiveUniform", program, index, room, Pointer{length}, Pointer{size},
                                 Pointer{type}, Pointer{name});
    if (state().fails("glGetActiveUniform")) return;
    if (auto const* const found = findProgram(program))
        getActive(found->uniforms, index, room, length, size, type, name);
}

GLint glGetAttribLocation(GLuint program, GLchar const* name) {
    auto const recorded = record("glGetAttribLocation", program, name);
    if (state().fails("glGetAttribLocation")) return -1;
    auto const* const found = findProgram(program);
    return found == nullptr ? -1 : locationOf(found->attributes, name);
}

GLint glGetUniformLocation(GLuint program, GLchar const* name) {
    auto const recorded = record("glGetUniformLocation", program, name);
    if (state().fails("glGetUniformLocation")) return -1;
    auto const* const found = findProgram(program);
    return found == nullptr ? -1 : locationOf(found->uniforms, name);
}
