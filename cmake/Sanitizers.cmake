# Sanitizers see a fault only in code that was built with them, so they are set for the whole tree and not per target.

if(LOG4VRK_SANITIZE)
  list(JOIN LOG4VRK_SANITIZE "," kinds)
  add_compile_options(-fsanitize=${kinds} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${kinds})
endif()
