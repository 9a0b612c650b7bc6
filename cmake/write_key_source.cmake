# Writes the C++ source OUTPUT with the key that KEY_FILE holds. Says nothing of what it reads.
cmake_minimum_required(VERSION 3.25)

function(refuse)
    file(REMOVE "${OUTPUT}")
    message(FATAL_ERROR "VELDMAP_KEY_FILE is no key: ${KEY_FILE}")
endfunction()

if(NOT EXISTS "${KEY_FILE}" OR IS_DIRECTORY "${KEY_FILE}")
    refuse()
endif()
file(SIZE "${KEY_FILE}" size)
if(size EQUAL 32)
    file(READ "${KEY_FILE}" digits HEX)
elseif(size EQUAL 64 OR size EQUAL 65)
    # A text may hide a zero byte, its bytes in hexadecimal can't.
    file(READ "${KEY_FILE}" text HEX)
    if(NOT text MATCHES "^(3[0-9]|[46][1-6])+(0a)?$")
        refuse()
    endif()
    file(READ "${KEY_FILE}" digits)
    string(STRIP "${digits}" digits)
endif()
string(LENGTH "${digits}" length)
if(NOT length EQUAL 64)
    refuse()
endif()

string(REGEX REPLACE "(..)" "0x\\1, " bytes "${digits}")
set(content "#include \"container/container.h\"

const unsigned char VMXML::AESVeldKey[32] = {${bytes}};

bool veldmap::usesDevelopmentKey()
{
    return false;
}
")
set(present "")
if(EXISTS "${OUTPUT}")
    file(READ "${OUTPUT}" present)
endif()
if(NOT present STREQUAL content)
    # The permissions come first: nobody else opens the file between writing and closing it to them.
    file(REMOVE "${OUTPUT}")
    file(TOUCH "${OUTPUT}")
    file(CHMOD "${OUTPUT}" PERMISSIONS OWNER_READ OWNER_WRITE)
    file(WRITE "${OUTPUT}" "${content}")
endif()
