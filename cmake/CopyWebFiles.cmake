# Copies the page's files into DESTINATION: web/page/* and the score engraver from the npm
# packages (web/node_modules, installed by `npm ci`; without them the page draws the host's
# entries only). Run with cmake -DSOURCE=<repo>/web -DDESTINATION=<dir> -P.
file(MAKE_DIRECTORY ${DESTINATION})
file(GLOB page_files ${SOURCE}/page/*)
file(COPY ${page_files} DESTINATION ${DESTINATION})
set(engraver ${SOURCE}/node_modules/verovio/dist/verovio-toolkit-wasm.js)
if(EXISTS ${engraver})
  file(COPY ${engraver} DESTINATION ${DESTINATION})
else()
  message(WARNING "${engraver} is missing (run `npm ci` in web/): the page is served without the score engraver")
endif()
