// The words that generated headers use and leave to their user, for a 32-bit target.

typedef volatile unsigned int REG32;
typedef volatile unsigned short REG16;
typedef volatile unsigned char REG8;

typedef unsigned int UINT;
typedef unsigned int UINT32;
typedef unsigned short UINT16;
typedef unsigned char UINT8;

typedef int INT;
typedef int INT32;
typedef short INT16;
typedef signed char INT8;

typedef UINT8 BOOL;
typedef void VOID;

// Addresses are used as they stand: there is no window to move them into.
#define KSEG1(address) (address)

// What expressions call. A count beyond 31 starts again at 0, as it does in descriptions.
#define EXP2(exponent) (1 << ((exponent)&31))
