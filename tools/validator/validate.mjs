// Validates one GLB with the Khronos glTF validator.
//   node validate.mjs FILE.glb [--allow RULE[,RULE...]]... [--allow-file FILE]... [--json | --error-codes]
// A RULE is an issue code, allowed anywhere, or CODE@POINTER, allowed only at that JSON
// pointer, where "*" stands for any run of characters (/animations/*/channels).
// --allow-file reads one RULE a line; blank lines and lines starting with "#" are skipped.
// --error-codes prints the distinct codes of the errors, one a line, and exits 0.
// Otherwise it prints every issue (text, or the whole report as JSON with --json) and exits 1 when
// an error is reported that no rule allows, 2 when the file or the validator cannot
// be used, 0 otherwise.
import { readFileSync } from 'node:fs';
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

function globToRegExp(glob) {
  const escaped = glob.split('*').map((part) => part.replace(/[.+?^${}()|[\]\\]/g, '\\$&'));
  return new RegExp('^' + escaped.join('.*') + '$');
}

function addRule(rule) {
  const at = rule.indexOf('@');
  allowed.push(at < 0 ? { code: rule, pointer: null } : { code: rule.slice(0, at), pointer: globToRegExp(rule.slice(at + 1)) });
}

const args = process.argv.slice(2);
const allowed = [];
let file = null;
let asJson = false;
let codesOnly = false;
for (let i = 0; i < args.length; ++i) {
  if (args[i] === '--allow') {
    if (i + 1 >= args.length) usage('--allow needs a list of codes');
    for (const rule of args[++i].split(',')) if (rule) addRule(rule);
  } else if (args[i] === '--allow-file') {
    if (i + 1 >= args.length) usage('--allow-file needs a file');
    const name = args[++i];
    let text;
    try {
      text = readFileSync(name, 'utf8');
    } catch (e) {
      usage(`cannot read ${name}: ${e.message}`);
    }
    for (const line of text.split('\n')) {
      const rule = line.trim();
      if (rule && !rule.startsWith('#')) addRule(rule);
    }
  } else if (args[i] === '--error-codes') {
    codesOnly = true;
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

function isAllowed(m) {
  return allowed.some((rule) => {
    if (rule.code !== m.code) return false;
    if (rule.pointer === null) return true;
    return rule.pointer.test(m.pointer ?? '');
  });
}

const messages = report.issues.messages;
const failing = messages.filter((m) => m.severity === 0 && !isAllowed(m));
if (codesOnly) {
  const codes = new Set(messages.filter((m) => m.severity === 0).map((m) => m.code));
  for (const code of codes) process.stdout.write(code + '\n');
  process.exit(0);
}
if (asJson) {
  process.stdout.write(JSON.stringify({ file, failing: failing.length, issues: messages }, null, 1) + '\n');
} else {
  for (const m of messages) {
    const mark = m.severity === 0 ? (isAllowed(m) ? 'allowed error' : 'ERROR') : severityNames[m.severity];
    process.stdout.write(`${file}: ${mark} ${m.code} ${m.pointer ?? ''} ${m.message}\n`);
  }
}
process.exit(failing.length > 0 ? 1 : 0);
