// SPDX-License-Identifier: Apache-2.0
/** The packages of others that the tests use, from where script/web-test puts them. @module */

import {createRequire} from 'node:module';
import {fileURLToPath} from 'node:url';

const require = createRequire(new URL('../../build/web/package.json', import.meta.url));

export const {WebSocket, WebSocketServer} = require('ws');
export const {JSONRPCClient} = require('json-rpc-2.0');
export const {chromium} = require('playwright-core');

/** Where screenshots go. */
export const OUTPUT = fileURLToPath(new URL('../../build/web/', import.meta.url));
