# What an app brings along is all there, and finds itself wherever it is put.
file(REMOVE_RECURSE ${PREFIX})
execute_process(COMMAND ${CMAKE_COMMAND} --install ${BUILD} --prefix ${PREFIX} --component runtime OUTPUT_QUIET
    COMMAND_ERROR_IS_FATAL ANY)

foreach(file ${LIBRARY} ${BUNDLE}/Paneweld ${BUNDLE}/Resources/Info.plist ${BUNDLE}/Resources/MailHandlers.scpt
        ${BUNDLE}/Resources/en.lproj/Localizable.strings)
    if(NOT EXISTS ${PREFIX}/${file})
        message(SEND_ERROR "${file} is not installed")
    endif()
endforeach()

file(READ_ELF ${PREFIX}/${BUNDLE}/Paneweld RUNPATH folders)
if(NOT folders STREQUAL "\$ORIGIN/..")
    message(SEND_ERROR "the plug-in looks for its library in ${folders}")
endif()
file(READ_ELF ${PREFIX}/${LIBRARY} RUNPATH others)
if(others)
    message(SEND_ERROR "the library looks for others in ${others}")
endif()
