# What makes a fault in the code hard to use; tests/reliability/hardening.py reads it back from what was built. The
# sanitizers bring checks of their own, which some of this would hide.
include(CheckCXXCompilerFlag)

if(NOT DLP_SANITIZE)
    foreach(flag -fstack-protector-strong -fstack-clash-protection -fcf-protection)
        string(MAKE_C_IDENTIFIER "DLP_HAS${flag}" result)
        check_cxx_compiler_flag(${flag} ${result})
        if(${result})
            target_compile_options(dlp_options INTERFACE ${flag})
        endif()
    endforeach()
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 12)
        set(DLP_FORTIFY 2)
    else()
        set(DLP_FORTIFY 3)
    endif()
    # Some compilers define it themselves. It needs an optimizing build.
    target_compile_options(dlp_options INTERFACE
                           $<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE> $<$<NOT:$<CONFIG:Debug>>:-D_FORTIFY_SOURCE=${DLP_FORTIFY}>)
endif()
# Under the sanitizers a program at a fixed place starts in three quarters of the time, and every test case is a start.
set(DLP_PLACE -pie)
if(DLP_SANITIZE MATCHES "address")
    set(DLP_PLACE -no-pie)
endif()
target_link_options(dlp_options INTERFACE -Wl,-z,relro,-z,now,-z,noexecstack
                                          $<$<STREQUAL:$<TARGET_PROPERTY:TYPE>,EXECUTABLE>:${DLP_PLACE}>)
