;;; nebgit-credentials.el --- Questions of git and ssh for passwords  -*- lexical-binding: t; -*-

;; SPDX-License-Identifier: MIT

;;; Commentary:

;; The server asks this client for what the user's credential helpers and ssh agent do not know.
;; Answers come from auth-source or from the user.  None is kept here.

;;; Code:

(require 'auth-source)
(require 'url-parse)
(require 'nebgit-request)

(defcustom nebgit-use-auth-source t
  "Whether names and passwords are looked up in the variable `auth-sources'."
  :type 'boolean
  :group 'nebgit)

(cl-defstruct nebgit-question
  "A question of the server with its PARAMS and the ID of its request.
ANSWER is the function to call with the result."
  params id answer)

(defvar nebgit-credentials--queue nil
  "Questions that wait, first one first.")

(defvar nebgit-credentials--asking nil
  "Question that the user is being asked.")

(defvar nebgit-credentials--given nil
  "Ids of running requests, and keys of answers that auth-source gave for them.")

(defvar nebgit-credentials--refused nil
  "Keys of answers of auth-source that a server refused.")

(defun nebgit-credentials--ask (params id answer)
  "Ask the question with PARAMS and ID, and pass the result to ANSWER."
  (setq nebgit-credentials--queue
        (append nebgit-credentials--queue
                (list (make-nebgit-question :params params :id id :answer answer))))
  (nebgit-credentials--next))

(defun nebgit-credentials--next ()
  "Work through the questions that wait, one by one."
  (while (and nebgit-credentials--queue (not nebgit-credentials--asking))
    (let* ((question (pop nebgit-credentials--queue))
           (nebgit-credentials--asking question)
           (params (nebgit-question-params question))
           (value (or (nebgit-credentials--known params)
                      (nebgit-credentials--read params))))
      (funcall (nebgit-question-answer question) (and value (list :value value)))
      (when value (clear-string value)))))

(defun nebgit-credentials--read (params)
  "Ask the user the question with PARAMS; return nil if the user declines."
  (let ((prompt (or (plist-get params :prompt) "Password: "))
        (enable-recursive-minibuffers t)
        (use-dialog-box nil)
        (inhibit-quit nil))
    (condition-case nil
        (copy-sequence
         (pcase (plist-get params :kind)
           ("hostKey" (if (yes-or-no-p (nebgit-credentials--question prompt)) "yes" "no"))
           ("name" (read-string prompt))
           (_ (read-passwd prompt))))
      ((quit error) nil))))

(defun nebgit-credentials--question (prompt)
  "Return PROMPT of ssh without the answers that it lists, for a yes or no."
  (concat (replace-regexp-in-string "[ ?]*([^()]*)\\?? *\\'" "" prompt) "? "))

;;; auth-source

(defun nebgit-credentials--key (params)
  "Return what identifies the secret of PARAMS: its kind, URL and user."
  (list (plist-get params :kind) (plist-get params :url) (plist-get params :user)))

(defun nebgit-credentials--known (params)
  "Return the answer of auth-source to the question with PARAMS, or nil."
  (let ((key (nebgit-credentials--key params)))
    (when (and nebgit-use-auth-source
               (member (car key) '("name" "password" "token"))
               (plist-get params :url)
               (not (member key nebgit-credentials--refused)))
      (let ((value (nebgit-credentials--search params)))
        (when value
          (push key (alist-get (plist-get params :request) nebgit-credentials--given))
          (copy-sequence value))))))

(defun nebgit-credentials--search (params)
  "Search the name or secret of PARAMS in auth-source."
  (let* ((url (url-generic-parse-url (plist-get params :url)))
         (entry (car (ignore-errors
                       (apply #'auth-source-search
                              :host (url-host url) :max 1 :require '(:user :secret)
                              (append
                               (list :port (delete-dups
                                            (list (url-type url)
                                                  (number-to-string (url-port url)))))
                               (let ((user (or (plist-get params :user) (url-user url))))
                                 (when user (list :user user))))))))
         (secret (plist-get entry :secret)))
    (if (equal (plist-get params :kind) "name")
        (plist-get entry :user)
      (if (functionp secret) (funcall secret) secret))))

(defun nebgit-credentials--ended (problem id)
  "Forget the answers for the request with ID.
If PROBLEM is that they were wrong, do not use them again."
  (when (equal (nebgit-error-class problem) "credentials-refused")
    (setq nebgit-credentials--refused (append (alist-get id nebgit-credentials--given)
                                              nebgit-credentials--refused)))
  (setf (alist-get id nebgit-credentials--given nil t) nil))

;;; Withdrawal

(defun nebgit-credentials--withdraw (params)
  "Forget the question whose id is in PARAMS, also while it is asked."
  (let ((id (plist-get params :id)))
    (setq nebgit-credentials--queue
          (cl-remove id nebgit-credentials--queue :test #'equal :key #'nebgit-question-id))
    (when (and nebgit-credentials--asking
               (equal id (nebgit-question-id nebgit-credentials--asking)))
      (run-at-time 0 nil #'nebgit-credentials--close-prompt id))))

(defun nebgit-credentials--withdraw-all ()
  "Forget all questions, whose server has ended."
  (setq nebgit-credentials--queue nil)
  (when nebgit-credentials--asking
    (nebgit-credentials--withdraw (list :id (nebgit-question-id nebgit-credentials--asking)))))

(defun nebgit-credentials--close-prompt (id)
  "Close the minibuffer if it still asks the question ID."
  (when (and nebgit-credentials--asking (active-minibuffer-window)
             (equal id (nebgit-question-id nebgit-credentials--asking)))
    (abort-recursive-edit)))

(setq nebgit-client-capabilities (plist-put nebgit-client-capabilities :credentials t))
(setf (alist-get 'sourceControl/credentials nebgit-question-functions) #'nebgit-credentials--ask
      (alist-get '$/cancelRequest nebgit-notification-functions) #'nebgit-credentials--withdraw)
(add-hook 'nebgit-ended-hook #'nebgit-credentials--ended)
(add-hook 'nebgit-server-ended-hook #'nebgit-credentials--withdraw-all)

(provide 'nebgit-credentials)
;;; nebgit-credentials.el ends here
