// Checks .glb and .gltf files (with the files their URIs name, relative to
// each) and prints the validator's messages, one summary line per file:
// "FILE errors E warnings W infos I hints H". Exit code 0 only when no file
// has an error or a warning, 1 otherwise, 2 when a file cannot be read.
'use strict';
const fs = require('fs');
const path = require('path');
const validator = require('gltf-validator');

async function check(file) {
  const folder = path.dirname(file);
  const report = await validator.validateBytes(new Uint8Array(fs.readFileSync(file)), {
    uri: path.basename(file),
    maxIssues: 100,
    externalResourceFunction: (uri) =>
      new Promise((resolve, reject) => {
        fs.readFile(path.join(folder, decodeURIComponent(uri)), (error, data) =>
          error ? reject(error.toString()) : resolve(new Uint8Array(data)));
      }),
  });
  const issues = report.issues;
  for (const message of issues.messages)
    console.log(`${file}: ${message.severity} ${message.code} ${message.pointer || ''} ` +
                message.message);
  console.log(`${file} errors ${issues.numErrors} warnings ${issues.numWarnings} ` +
              `infos ${issues.numInfos} hints ${issues.numHints}`);
  return issues.numErrors === 0 && issues.numWarnings === 0;
}

async function main(files) {
  if (files.length === 0) {
    console.error('usage: node validate.js FILE.glb|FILE.gltf...');
    return 2;
  }
  let clean = true;
  for (const file of files) {
    try {
      clean = (await check(file)) && clean;
    } catch (error) {
      console.error(`${file}: ${error}`);
      return 2;
    }
  }
  return clean ? 0 : 1;
}

main(process.argv.slice(2)).then((code) => process.exit(code));
