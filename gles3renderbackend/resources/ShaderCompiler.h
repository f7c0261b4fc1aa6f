#pragma once

#include "gles3renderbackend/resources/GlName.h"

#include <map>
#include <string>

/// A linked program with the name and location of every active attribute and uniform.
struct CompiledProgram {
    GlName program;
    std::map<std::string, GLint> attributes;
    std::map<std::string, GLint> uniforms;
};

/// Compiles and links, the fragment stage first. Throws VelmoraException with GL's log; a stage that does not compile
/// is listed with numbered lines. After an exception nothing is left in GL, otherwise the program alone.
CompiledProgram compileProgram(std::string const& vertexSource, std::string const& fragmentSource);
