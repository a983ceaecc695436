// SPDX-License-Identifier: Apache-2.0
/** Forms for the methods of an OpenRPC document. @module */

import {make} from './page.js';

const COMMAND_PREFIX = 'command.';

/** "url" -> what the browser offers for it. */
const SUGGESTIONS = {url: 'known-pictures', effect: 'known-effects'};

/** One parameter: how it is asked for and read. A value that was not given is undefined. */
class Field {
  constructor(param, prefix) {
    this.name = param.name;
    const type = param.schema?.type;
    const id = `${prefix}-${param.name}`;
    if (type === 'array') {
      this.input = make('textarea', {id, rows: 2, placeholder: 'one a line'});
      this.read = () => this.input.value === '' ? undefined : this.input.value.split('\n');
    } else if (type === 'boolean') {
      this.input = make('input', {id, type: 'checkbox', checked: true});
      this.read = () => this.input.checked;
    } else if (type === 'integer' || type === 'number') {
      this.input = make('input', {id, type: 'number', step: type === 'integer' ? 1 : 'any'});
      this.read = () => this.input.value === '' ? undefined : this.input.valueAsNumber;
    } else {
      this.input = make('input', {id, type: 'text', autocomplete: 'off', spellcheck: false});
      this.read = () => this.input.value === '' ? undefined : this.input.value;
    }
    this.input.required = Boolean(param.required) && type !== 'boolean';
    if (SUGGESTIONS[param.name]) {
      this.input.setAttribute('list', SUGGESTIONS[param.name]);
    }
    this.label = make('label', {htmlFor: id, title: param.description ?? ''},
                      `${param.name}${param.required ? '' : ' (optional)'} `, this.input);
  }
}

/**
 * A form for one method.
 * @param {{name: string, summary?: string, params: object[]}} method
 * @param {(method: string, params: object) => Promise<*>} call
 */
function formOf(method, call) {
  const title = method.name.replace(COMMAND_PREFIX, '');
  const fields = method.params.map((param) => new Field(param, method.name));
  const output = make('output', {});
  const form = make('form', {className: 'method', 'aria-label': title},
                    make('h3', {}, title), make('p', {}, method.summary ?? ''),
                    make('div', {className: 'fields'}, ...fields.map((field) => field.label)),
                    make('button', {'aria-label': `Run ${title}`}, 'Run'), output);
  form.dataset.method = method.name;
  form.dataset.words = `${title} ${method.summary ?? ''}`.toLowerCase();

  form.addEventListener('submit', async (event) => {
    event.preventDefault();
    const given = fields.map((field) => [field.name, field.read()]).filter(([, value]) => value !== undefined);
    const from = performance.now();
    output.className = 'waiting';
    output.textContent = '...';
    try {
      const result = await call(method.name, Object.fromEntries(given));
      output.className = result === 0 ? 'failed' : 'done';
      output.textContent = `${JSON.stringify(result)}  in ${(performance.now() - from).toFixed(1)} ms`;
    } catch (error) {
      output.className = 'failed';
      output.textContent = [`error ${error.code}: ${error.message}`, error.data?.hint].filter(Boolean).join('; ');
    }
  });
  return form;
}

/**
 * Fills `place` with a form for each method: the commands of the engine first, then what else the television can do.
 * @param {HTMLElement} place
 * @param {{methods: object[]}} document in OpenRPC
 * @param {(method: string, params: object) => Promise<*>} call
 */
export function buildForms(place, {methods}, call) {
  const isCommand = ({name}) => name.startsWith(COMMAND_PREFIX);
  const group = (title, members) => make('section', {'aria-label': title}, make('h2', {}, title),
                                         ...members.map((method) => formOf(method, call)));
  place.replaceChildren(group('Commands of the engine', methods.filter(isCommand)),
                        group('The television', methods.filter((method) => !isCommand(method))));
}

/** Hides the forms in `place` that do not hold all of the words. */
export function filterForms(place, text) {
  const words = text.toLowerCase().split(/\s+/).filter(Boolean);
  for (const form of place.querySelectorAll('form')) {
    form.hidden = !words.every((word) => form.dataset.words.includes(word));
  }
  for (const group of place.querySelectorAll('section')) {
    group.hidden = !group.querySelector('form:not([hidden])');
  }
}
