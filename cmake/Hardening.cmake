# What makes a fault in the code hard to use; tests/reliability/hardening.py reads it back from what was built.
target_link_options(dlp_options INTERFACE -Wl,-z,relro,-z,now,-z,noexecstack
                                          $<$<STREQUAL:$<TARGET_PROPERTY:TYPE>,EXECUTABLE>:-pie>)
