#include "tests/support/RecordingGl.h"

#include "gles3renderbackend/ExpectedState.h"
#include "tests/support/RecordingGlState.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <stdexcept>

namespace recording {

namespace {

std::unique_ptr<State>& holder() {
    static auto state = std::make_unique<State>();
    return state;
}

// Where a call goes that comes after the context was lost: it has no effect, and finds nothing.
std::unique_ptr<State>& nowhere() {
    static std::unique_ptr<State> state;
    return state;
}

thread_local int callsBeingAnswered = 0;

} // namespace

State& state() {
    return nowhere() ? *nowhere() : *holder();
}
void forgetState() {
    holder() = std::make_unique<State>();
}

AtWork::AtWork() {
    ++callsBeingAnswered;
}
AtWork::AtWork(AtWork&& other) noexcept : counted_(std::exchange(other.counted_, false)) {}
AtWork::~AtWork() {
    if (!counted_) return;
    --callsBeingAnswered;
    nowhere().reset();
}

void AtWork::leaveNoTrace() {
    auto lost = std::make_unique<State>();
    lost->verdict = Verdict::Lost;
    lost->calls.emplace_back(); // the one that is answered
    nowhere() = std::move(lost);
}

void State::record(char const* name, std::vector<RecordingGl::Argument> arguments) {
    if (std::this_thread::get_id() != thread) ADD_FAILURE() << name << " is called on a thread that has no GL context";
    current = {name, std::move(arguments), {}};
#ifdef VELMORA_CHECKED
    // Checked builds alone query the host's state; these queries are no part of an operation.
    verdict = GlFaultPlan::instance().isContextLost() ? Verdict::Lost : Verdict::Right;
    if (expectedState::beingLookedAt) return;
#endif
    calls.push_back(current);
    verdict = GlFaultPlan::instance().next(name);
    if (verdict == Verdict::OutOfMemory || verdict == Verdict::PendingError) raiseScripted(GL_OUT_OF_MEMORY);
}

bool State::fails(char const* name) {
    if (verdict == Verdict::Refused || verdict == Verdict::OutOfMemory || verdict == Verdict::Lost) return true;
    for (auto failure = failures.begin(); failure != failures.end(); ++failure) {
        if (failure->name != name) continue;
        if (failure->skip > 0) {
            --failure->skip;
            return false;
        }
        raiseScripted(failure->error);
        failures.erase(failure);
        return true;
    }
    return false;
}

void State::raise(GLenum code, std::string const& reason) {
    errors.push_back(
        {code, (code == GL_NO_ERROR ? "misuse" : enumName(code)) + " by " + current.text() + ": " + reason});
    if (code == GL_NO_ERROR || flag != GL_NO_ERROR)
        return; // as in GL, the flag keeps the first error until it has been read
    flag = code;
    flagMisuse = errors.size() - 1;
}

void State::raiseScripted(GLenum code) {
    if (code == GL_NO_ERROR || flag != GL_NO_ERROR) return;
    flag = code;
    flagMisuse.reset();
}

std::vector<GLint> State::integersOf(GLenum name) const {
    auto const signedName = [](GLuint value) { return std::vector<GLint>{static_cast<GLint>(value)}; };
    switch (name) {
    case GL_TEXTURE_BINDING_2D:
        return signedName(boundTexture());
    case GL_FRAMEBUFFER_BINDING:
        return signedName(drawFramebuffer);
    case GL_READ_FRAMEBUFFER_BINDING:
        return signedName(readFramebuffer);
    case GL_CURRENT_PROGRAM:
        return signedName(currentProgram);
    case GL_ACTIVE_TEXTURE:
        return signedName(GL_TEXTURE0 + activeUnit);
    case GL_ARRAY_BUFFER_BINDING:
        return signedName(boundBuffer(GL_ARRAY_BUFFER));
    case GL_ELEMENT_ARRAY_BUFFER_BINDING:
        return signedName(boundBuffer(GL_ELEMENT_ARRAY_BUFFER));
    case GL_PIXEL_PACK_BUFFER_BINDING:
        return signedName(boundBuffer(GL_PIXEL_PACK_BUFFER));
    case GL_PIXEL_UNPACK_BUFFER_BINDING:
        return signedName(boundBuffer(GL_PIXEL_UNPACK_BUFFER));
    case GL_SAMPLER_BINDING: {
        auto const found = boundSamplers.find(activeUnit);
        return signedName(found == boundSamplers.end() ? 0 : found->second);
    }
    default:
        break;
    }
    if (auto const found = integers.find(name); found != integers.end()) return found->second;
    if (auto const found = pixelStore.find(name); found != pixelStore.end()) return {found->second};
    return {};
}

GLuint State::boundTexture() const {
    auto const found = boundTextures.find(activeUnit);
    return found == boundTextures.end() ? 0 : found->second;
}

GLuint State::boundBuffer(GLenum target) const {
    auto const found = boundBuffers.find(target);
    return found == boundBuffers.end() ? 0 : found->second;
}

} // namespace recording

using recording::state;

RecordingGl& RecordingGl::instance() {
    static RecordingGl gl;
    return gl;
}

bool RecordingGl::atWork() {
    return recording::callsBeingAnswered != 0;
}

std::string RecordingGl::Call::text() const {
    std::string list;
    for (auto const& argument : arguments)
        list += (list.empty() ? "" : ", ") + argument.text;
    return name + "(" + list + ")";
}

std::vector<float> const& RecordingGl::Program::value(std::string const& uniform) const {
    for (auto const& active : uniforms)
        if (active.name == uniform) return values.at(active.location);
    throw std::out_of_range("the program has no uniform " + uniform);
}

void RecordingGl::reset() {
    recording::forgetState();
}

void RecordingGl::forgetCalls() {
    state().calls.clear();
    state().draws.clear();
}

std::vector<RecordingGl::Call> const& RecordingGl::calls() const {
    return state().calls;
}
std::string RecordingGl::call(size_t index) const {
    return state().calls.at(index).text();
}
std::vector<RecordingGl::Draw> const& RecordingGl::draws() const {
    return state().draws;
}

std::vector<std::string> RecordingGl::names() const {
    std::vector<std::string> result;
    result.reserve(calls().size());
    for (auto const& call : calls())
        result.push_back(call.name);
    return result;
}

std::vector<std::string> RecordingGl::texts(bool onlyEffects) const {
    std::vector<std::string> result;
    for (auto const& call : calls()) {
        auto const query = call.name.rfind("glGet", 0) == 0 || call.name.rfind("glIs", 0) == 0;
        if (!onlyEffects || !query) result.push_back(call.text());
    }
    return result;
}

size_t RecordingGl::count(std::string const& name) const {
    return callsOf(name).size();
}

std::vector<RecordingGl::Call> RecordingGl::callsOf(std::string const& name) const {
    std::vector<Call> result;
    std::copy_if(calls().begin(), calls().end(), std::back_inserter(result),
                 [&](Call const& call) { return call.name == name; });
    return result;
}

RecordingGl::Call const& RecordingGl::last(std::string const& name) const {
    auto const found =
        std::find_if(calls().rbegin(), calls().rend(), [&](Call const& call) { return call.name == name; });
    if (found == calls().rend()) throw std::out_of_range(name + " was never called");
    return *found;
}

std::vector<std::string> RecordingGl::living() const {
    std::map<GLuint, std::string> objects;
    for (auto const& [name, texture] : state().textures)
        objects[name] = "texture";
    for (auto const& [name, buffer] : state().buffers)
        objects[name] = "buffer";
    for (auto const& [name, framebuffer] : state().framebuffers)
        objects[name] = "framebuffer";
    for (auto const& [name, shader] : state().shaders)
        objects[name] = "shader";
    for (auto const& [name, program] : state().programs)
        objects[name] = "program";
    std::vector<std::string> result;
    result.reserve(objects.size());
    for (auto const& [name, kind] : objects)
        result.push_back(kind + " " + std::to_string(name));
    return result;
}

RecordingGl::Texture const& RecordingGl::texture(GLuint name) const {
    return state().textures.at(name);
}
RecordingGl::Buffer const& RecordingGl::buffer(GLuint name) const {
    return state().buffers.at(name);
}
RecordingGl::Framebuffer const& RecordingGl::framebuffer(GLuint name) const {
    return state().framebuffers.at(name);
}
RecordingGl::Shader const& RecordingGl::shader(GLuint name) const {
    return state().shaders.at(name);
}
RecordingGl::Program const& RecordingGl::program(GLuint name) const {
    return state().programs.at(name);
}

bool RecordingGl::isLiving(GLuint name) const {
    auto const& s = state();
    return s.textures.count(name) + s.buffers.count(name) + s.framebuffers.count(name) + s.shaders.count(name) +
               s.programs.count(name) !=
           0;
}

GLuint RecordingGl::boundTexture(GLuint unit) const {
    auto const found = state().boundTextures.find(unit);
    return found == state().boundTextures.end() ? 0 : found->second;
}

GLuint RecordingGl::boundBuffer(GLenum target) const {
    return state().boundBuffer(target);
}

GLuint RecordingGl::boundFramebuffer(GLenum target) const {
    return target == GL_READ_FRAMEBUFFER ? state().readFramebuffer : state().drawFramebuffer;
}

GLuint RecordingGl::currentProgram() const {
    return state().currentProgram;
}
GLuint RecordingGl::activeUnit() const {
    return state().activeUnit;
}
bool RecordingGl::enabled(GLenum capability) const {
    return state().enabled.count(capability) != 0;
}
GLint RecordingGl::pixelStore(GLenum name) const {
    return state().pixelStore.at(name);
}
std::vector<GLint> RecordingGl::integers(GLenum name) const {
    return state().integersOf(name);
}
std::map<GLuint, RecordingGl::VertexAttribute> const& RecordingGl::attributes() const {
    return state().attributes;
}
bool RecordingGl::depthMask() const {
    return state().depthMask;
}
std::vector<float> const& RecordingGl::clearColor() const {
    return state().clearColor;
}

void RecordingGl::failNext(std::string const& name, GLenum error, size_t skip) {
    state().failures.push_back({name, error, skip});
}
void RecordingGl::failCompile(GLenum shaderType, std::string const& infoLog) {
    state().compileFailures[shaderType].emplace_back(infoLog);
}
void RecordingGl::failLink(std::string const& infoLog) {
    state().linkFailures.emplace_back(infoLog);
}
void RecordingGl::setInteger(GLenum name, GLint value) {
    state().integers[name] = {value};
}
void RecordingGl::setString(GLenum name, std::string const& value) {
    state().strings[name] = value;
}
void RecordingGl::setFramebufferStatus(GLenum status) {
    state().framebufferStatus = status;
}
void RecordingGl::setReadPixels(std::vector<std::uint8_t> const& pixels) {
    state().readPixels = pixels;
}
void RecordingGl::drawDigests() {
    state().digests = true;
}
void RecordingGl::placeUniform(std::string const& name, GLint location) {
    state().places[name] = location;
}
void RecordingGl::expectError(GLenum error) {
    state().expected.insert(error);
}

void RecordingGl::scriptProgram(std::vector<Active> const& attributes, std::vector<Active> const& uniforms) {
    state().programScripts.push_back({attributes, uniforms});
}

std::vector<std::string> RecordingGl::findings() const {
    auto const& s = state();
    std::vector<std::string> result;
    for (auto const& error : s.errors)
        if (!error.read && s.expected.count(error.code) == 0) result.push_back(error.text);
    for (auto const code : s.expected) {
        auto const came =
            std::any_of(s.errors.begin(), s.errors.end(), [&](auto const& error) { return error.code == code; });
        if (!came) result.push_back("the expected " + recording::enumName(code) + " did not come");
    }
    for (auto const& [index, attribute] : s.attributes)
        if (attribute.enabled)
            result.push_back("vertex attribute array " + std::to_string(index) + " was left enabled");
    for (auto const& failure : s.failures)
        result.push_back("the scripted failure of " + failure.name + " was not reached");
    for (auto const& [type, logs] : s.compileFailures)
        if (!logs.empty())
            result.push_back("the scripted failure to compile a " + recording::enumName(type) + " was not reached");
    if (!s.linkFailures.empty()) result.emplace_back("the scripted failure to link was not reached");
    if (!s.programScripts.empty()) result.emplace_back("a scripted program was not linked");
    return result;
}
