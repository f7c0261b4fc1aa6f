#pragma once

#include "gles3renderbackend/resources/GlName.h"

#include <map>
#include <string>

/// A linked program and what GL says of it: every active attribute and uniform with its location, under GL's name.
struct CompiledProgram {
    GlName program;
    std::map<std::string, GLint> attributes;
    std::map<std::string, GLint> uniforms;
};

/// Compiles and links, the fragment stage first. Throws VelmoraException with GL's log; a stage that does not compile
/// is listed with numbered lines. Nothing is left in GL where it throws; where it does not, the program alone is.
CompiledProgram compileProgram(std::string const& vertexSource, std::string const& fragmentSource);
