#include "commands/CommandLine.h"

int main(int inCount, char** inArguments)
{
    return trhost::RunProgram(inCount, inArguments);
}
