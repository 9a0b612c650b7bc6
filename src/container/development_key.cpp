// The key of a build that was given none. It keeps nothing secret, since everybody can read it here.

#include "container/container.h"

const unsigned char VMXML::AESVeldKey[32] = {'v', 'e', 'l', 'd', 'm', 'a', 'p', ' ', 'd', 'e', 'v',
                                             'e', 'l', 'o', 'p', 'm', 'e', 'n', 't', ' ', 'k', 'e',
                                             'y', ',', ' ', 'p', 'u', 'b', 'l', 'i', 'c', '.'};

bool veldmap::usesDevelopmentKey()
{
    return true;
}
