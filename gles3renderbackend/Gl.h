#pragma once

// The only file that includes the GL headers.
#include <GLES3/gl3.h>
