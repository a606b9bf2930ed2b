// A program that does nothing, for a room to be linked with.

int main()
{
    return 0;
}
