// A host program that only uses the installed headers and library, from a folder with no
// media beside it: starting the library must still find the package's effect file.
#include <ixocore/ixocore.h>

#include <cstdio>

int main()
{
    ixo_string text(IXO_TEXT("rotor"));
    if (text.length() != 5)
        return 1;
    int const code = ixo_application::start(nullptr);
    if (code != ixo_start_success)
    {
        std::fprintf(stderr, "consumer: the library did not start (code %d)\n", code);
        return 2;
    }
    ixo_application::end();
    return 0;
}
