// Scene-file reader on arbitrary text: JSON syntax, numbers out of range, types, keys,
// NUL characters and object trees. It may throw scene_error only, with a printable
// message; anything else escapes and is reported.

#include "scene_file.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace
{
bool printable(const char* text)
{
    for (; *text; ++text)
        if (static_cast<unsigned char>(*text) < 0x20)
            return false;
    return true;
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    std::string const text(reinterpret_cast<const char*>(data), size);
    try
    {
        // Relative file names reach the sample scenes' meshes and pictures.
        ixo_scene_file::read_scene_text(text, IXO_FUZZ_SCENE_FOLDER);
    }
    catch (const ixo_scene_file::scene_error& e)
    {
        if (!printable(e.what()) || !printable(e.where().c_str()))
            __builtin_trap();
    }
    return 0;
}
