// Stands in for an external editor: writes each argument it was started with
// on its own line to the file named by TESK_ARGRECORDER_OUT.
#include <cstdio>
#include <cstdlib>
#include <string>

int main(int argc, char** argv)
{
    const char* out = std::getenv("TESK_ARGRECORDER_OUT");
    if (!out)
        return 2;
    // Written under a temporary name and renamed, so the test never reads a
    // half-written file.
    const std::string partial = std::string(out) + ".part";
    FILE* f = std::fopen(partial.c_str(), "wb");
    if (!f)
        return 1;
    for (int i = 1; i < argc; ++i)
        std::fprintf(f, "%s\n", argv[i]);
    std::fclose(f);
    return std::rename(partial.c_str(), out) == 0 ? 0 : 1;
}
