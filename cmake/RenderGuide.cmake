# cmake -DMARKDOWN=markdown_py -DINPUT=guide.md -DOUTPUT=guide.html -P RenderGuide.cmake
# The headings get the ids the guide's own links use (#the-window).
execute_process(
  COMMAND ${MARKDOWN} -o html -x toc -x tables -x fenced_code ${INPUT}
  OUTPUT_VARIABLE body
  RESULT_VARIABLE failed)
if(failed)
  message(FATAL_ERROR "${MARKDOWN} could not render ${INPUT}")
endif()
file(WRITE ${OUTPUT}.part "<!DOCTYPE html>
<html lang=\"en\">
<head>
<meta charset=\"utf-8\">
<title>Ferrox user guide</title>
<style>
body { max-width: 60em; margin: 2em auto; padding: 0 1em; font-family: sans-serif; line-height: 1.45; }
img { max-width: 100%; }
code, pre { background: #f2f2f2; }
pre { padding: 0.5em; overflow-x: auto; }
table { border-collapse: collapse; }
td, th { border: 1px solid #bbb; padding: 0.2em 0.5em; }
</style>
</head>
<body>
${body}</body>
</html>
")
file(RENAME ${OUTPUT}.part ${OUTPUT})
