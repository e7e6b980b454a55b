// Checks one .glb or .gltf file (and the files its URIs name, relative to
// it) and prints the validator's messages; exit code 0 only when there is
// no error and no warning, 1 otherwise, 2 when the file cannot be read.
'use strict';
const fs = require('fs');
const path = require('path');
const validator = require('gltf-validator');

const file = process.argv[2];
if (!file) {
  console.error('usage: node validate.js FILE.glb|FILE.gltf');
  process.exit(2);
}
let bytes;
try {
  bytes = new Uint8Array(fs.readFileSync(file));
} catch (error) {
  console.error(error.message);
  process.exit(2);
}
const folder = path.dirname(file);
validator
  .validateBytes(bytes, {
    uri: path.basename(file),
    maxIssues: 100,
    externalResourceFunction: (uri) =>
      new Promise((resolve, reject) => {
        fs.readFile(path.join(folder, decodeURIComponent(uri)), (error, data) =>
          error ? reject(error.toString()) : resolve(new Uint8Array(data)));
      }),
  })
  .then((report) => {
    const issues = report.issues;
    for (const message of issues.messages)
      console.log(`${message.severity} ${message.code} ${message.pointer || ''} ${message.message}`);
    console.log(`errors ${issues.numErrors} warnings ${issues.numWarnings} ` +
                `infos ${issues.numInfos} hints ${issues.numHints}`);
    process.exit(issues.numErrors === 0 && issues.numWarnings === 0 ? 0 : 1);
  })
  .catch((error) => {
    console.error(error.toString());
    process.exit(2);
  });
