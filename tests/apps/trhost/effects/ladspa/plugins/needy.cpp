// A file that needs a library which will not be there.
#include <ladspa.h>

extern "C" int NeededByNeedy();
extern "C" __attribute__((visibility("default"))) const LADSPA_Descriptor*
ladspa_descriptor(unsigned long inIndex);

const LADSPA_Descriptor* ladspa_descriptor(unsigned long)
{
    NeededByNeedy();
    return nullptr;
}
