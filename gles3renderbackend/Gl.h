#pragma once

// The one file that includes the GL headers.
#include <GLES3/gl3.h>
