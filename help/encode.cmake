# Writes the page FROM, which is UTF-8 and says so, as TO in a code page:
#   cmake -DICONV=iconv -DCODE_PAGE=CP1252 -DCHARSET=windows-1252 -DFROM=page.html -DTO=out/page.html -P encode.cmake
file(READ ${FROM} page)
string(REPLACE "charset=utf-8" "charset=${CHARSET}" page "${page}")
file(WRITE ${TO}.utf8 "${page}")
execute_process(COMMAND ${ICONV} -f UTF-8 -t ${CODE_PAGE} ${TO}.utf8
  OUTPUT_FILE ${TO} RESULT_VARIABLE failed)
file(REMOVE ${TO}.utf8)
if(failed)
  file(REMOVE ${TO})
  message(FATAL_ERROR "${FROM} has characters that ${CODE_PAGE} lacks")
endif()
