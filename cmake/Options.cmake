# What every target of the project is compiled with, and nothing of what its users see.
add_library(linklist_options INTERFACE)
target_compile_definitions(linklist_options INTERFACE
    QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_CONTEXTLESS_CONNECT QT_NO_KEYWORDS)
# A warning for all that is deprecated up to Qt 6.8, whichever Qt this is; Qt 6.4 knows the setting by its second name.
# Nothing is removed from Qt's headers (QT_DISABLE_DEPRECATED_UP_TO): without -Werror a later Qt builds this, too.
target_compile_definitions(linklist_options INTERFACE
    QT_WARN_DEPRECATED_UP_TO=0x060800 QT_DEPRECATED_WARNINGS_SINCE=0x060800)
target_compile_options(linklist_options INTERFACE
    -Wall -Wextra -Wshadow -Wnon-virtual-dtor -Wold-style-cast)
if(LINKLIST_WERROR)
    target_compile_options(linklist_options INTERFACE -Werror)
endif()
if(LINKLIST_SANITIZE)
    target_compile_options(linklist_options INTERFACE -fsanitize=${LINKLIST_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(linklist_options INTERFACE -fsanitize=${LINKLIST_SANITIZE})
endif()
