# What every target of the project is compiled with, and nothing of what its users see.
add_library(linklist_options INTERFACE)
target_compile_definitions(linklist_options INTERFACE
    QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_CONTEXTLESS_CONNECT QT_NO_KEYWORDS QT_DISABLE_DEPRECATED_BEFORE=0x060400)
target_compile_options(linklist_options INTERFACE
    -Wall -Wextra -Wshadow -Wnon-virtual-dtor -Wold-style-cast)
if(LINKLIST_WERROR)
    target_compile_options(linklist_options INTERFACE -Werror)
endif()
if(LINKLIST_SANITIZE)
    target_compile_options(linklist_options INTERFACE -fsanitize=${LINKLIST_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(linklist_options INTERFACE -fsanitize=${LINKLIST_SANITIZE})
endif()
