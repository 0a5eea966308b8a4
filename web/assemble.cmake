# Puts the page together into one file: the style, the engine (the
# WebAssembly module inlined in its script) with the worker's code, and the
# page's script, each in place of its mark in page.html.
#   cmake -DPAGE=page.html -DSTYLE=style.css -DENGINE=ugf_web.js -DWORKER=worker.js -DAPP=app.js -DOUT=ugf.html -P assemble.cmake
file(READ ${PAGE} page)
file(READ ${STYLE} style)
file(READ ${ENGINE} engine)
file(READ ${WORKER} worker)
file(READ ${APP} app)
set(worker_text "${engine}\n${worker}")
# Inside a script element no text may close it.
string(REPLACE "</script" "<\\/script" worker_text "${worker_text}")
string(REPLACE "</script" "<\\/script" app "${app}")
string(REPLACE "/*STYLE*/" "${style}" page "${page}")
string(REPLACE "/*WORKER*/" "${worker_text}" page "${page}")
string(REPLACE "/*APP*/" "${app}" page "${page}")
file(WRITE ${OUT} "${page}")
