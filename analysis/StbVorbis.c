/* The stb_vorbis implementation, compiled once into the analysis library.
   Warnings are silenced for this file only (see CMakeLists.txt). */
#include <stb_vorbis.h>
