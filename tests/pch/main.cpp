// Only there to carry the precompiled header that all test programs share.
int main()
{
    return 0;
}
