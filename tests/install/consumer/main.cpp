// A host program that only uses the installed headers and library.
#include <ixocore/ixocore.h>

int main()
{
    ixo_string text(IXO_TEXT("rotor"));
    return text.length() == 5 ? 0 : 1;
}
