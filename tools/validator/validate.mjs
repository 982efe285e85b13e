// Validates one GLB with the Khronos glTF validator.
//   node validate.mjs FILE.glb [--allow RULE[,RULE...]]... [--json]
// A RULE is an issue code, allowed anywhere, or CODE@POINTER, allowed only at that JSON
// pointer, where "*" stands for any run of characters (/animations/*/channels).
// Prints every issue (text, or the whole report as JSON with --json) and exits 1 when
// an error is reported that no rule allows, 2 when the file or the validator cannot
// be used, 0 otherwise.
import { readFile } from 'node:fs/promises';
import { createRequire } from 'node:module';
import path from 'node:path';
import { fileURLToPath } from 'node:url';

const here = path.dirname(fileURLToPath(import.meta.url));
const require = createRequire(path.join(here, 'node_modules', 'x.js'));

const severityNames = ['error', 'warning', 'info', 'hint'];

function usage(text) {
  process.stderr.write(`validate.mjs: ${text}\nusage: node validate.mjs FILE.glb [--allow CODE,...] [--json]\n`);
  process.exit(2);
}

const args = process.argv.slice(2);
const allowed = [];
let file = null;
let asJson = false;
for (let i = 0; i < args.length; ++i) {
  if (args[i] === '--allow') {
    if (i + 1 >= args.length) usage('--allow needs a list of codes');
    for (const rule of args[++i].split(',')) {
      if (!rule) continue;
      const at = rule.indexOf('@');
      allowed.push(at < 0 ? { code: rule, pointer: null } : { code: rule.slice(0, at), pointer: globToRegExp(rule.slice(at + 1)) });
    }
  } else if (args[i] === '--json') {
    asJson = true;
  } else if (file === null) {
    file = args[i];
  } else {
    usage(`unexpected argument ${args[i]}`);
  }
}
if (file === null) usage('no file given');

let validator;
try {
  validator = require('gltf-validator');
} catch (e) {
  usage('gltf-validator is not installed (run scripts/setup-deps.sh)');
}

let bytes;
try {
  bytes = new Uint8Array(await readFile(file));
} catch (e) {
  usage(`cannot read ${file}: ${e.message}`);
}

const report = await validator.validateBytes(bytes, {
  uri: path.basename(file),
  maxIssues: 0,
  externalResourceFunction: () => Promise.reject(new Error('external resources are not used')),
});

function globToRegExp(glob) {
  const escaped = glob.split('*').map((part) => part.replace(/[.+?^${}()|[\]\\]/g, '\\$&'));
  return new RegExp('^' + escaped.join('.*') + '$');
}

function isAllowed(m) {
  return allowed.some((rule) => {
    if (rule.code !== m.code) return false;
    if (rule.pointer === null) return true;
    return rule.pointer.test(m.pointer ?? '');
  });
}

const messages = report.issues.messages;
const failing = messages.filter((m) => m.severity === 0 && !isAllowed(m));
if (asJson) {
  process.stdout.write(JSON.stringify({ file, failing: failing.length, issues: messages }, null, 1) + '\n');
} else {
  for (const m of messages) {
    const mark = m.severity === 0 ? (isAllowed(m) ? 'allowed error' : 'ERROR') : severityNames[m.severity];
    process.stdout.write(`${file}: ${mark} ${m.code} ${m.pointer ?? ''} ${m.message}\n`);
  }
}
process.exit(failing.length > 0 ? 1 : 0);
