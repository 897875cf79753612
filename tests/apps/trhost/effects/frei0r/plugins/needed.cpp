// The library that will not be there.
extern "C" __attribute__((visibility("default"))) int NeededByNeedy();
extern "C" int NeededByNeedy()
{
    return 0;
}
